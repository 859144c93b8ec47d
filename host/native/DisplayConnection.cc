#include "native/DisplayConnection.h"

#include <X11/Xlib.h>

namespace {

Display* DisplayOf(void* display) { return static_cast<Display*>(display); }

// By default Xlib exits the process when the server goes away. With both handlers installed it returns.
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
