// not exported by Node.js: v8::NoSuchFunction()
namespace v8 {
void NoSuchFunction();
}  // namespace v8

void Caller() { v8::NoSuchFunction(); }
