// not on any list: _gettid
extern "C" int gettid();

int Caller() { return gettid(); }
