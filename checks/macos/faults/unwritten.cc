// unwritten: tessaro::platform::NobodyHasWrittenThis()
namespace tessaro::platform {
void NobodyHasWrittenThis();
}  // namespace tessaro::platform

void Caller() { tessaro::platform::NobodyHasWrittenThis(); }
