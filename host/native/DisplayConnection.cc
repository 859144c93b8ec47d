#include "native/DisplayConnection.h"

#include <X11/Xlib.h>

namespace {

Display* DisplayOf(void* display) { return static_cast<Display*>(display); }

// Left to itself, Xlib ends the process in the middle of whatever it is doing. With both handlers in place it returns.
int IgnoreError(Display*) { return 0; }

void MarkLost(Display*, void* connection) {
  if (connection != nullptr) static_cast<DisplayConnection*>(connection)->MarkLost();
}

}  // namespace

DisplayConnection::DisplayConnection(void* display) : display_(display) {
  XSetIOErrorHandler(IgnoreError);
  XSetIOErrorExitHandler(DisplayOf(display_), ::MarkLost, this);
}

DisplayConnection::~DisplayConnection() { XSetIOErrorExitHandler(DisplayOf(display_), ::MarkLost, nullptr); }

int DisplayConnection::Descriptor() const { return ConnectionNumber(DisplayOf(display_)); }
