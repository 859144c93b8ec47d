#pragma once

#include <functional>
#include <string>

#include "Base/Result.h"

namespace tessaro::platform {

// Composes the message of a mailto link, UTF-8; fails when the link is refused.
using LinkHandler = std::function<Result<void>(const std::string& link)>;

// Lets other applications script this one: the elements and properties of the application object and of its outgoing
// messages are reached by Cocoa's key-value coding. Links that the system hands to the application go to `openLink`.
//
// Main thread only, for the life of the process; requests of other applications run there too, on a turn of the main
// loop. Does nothing on a system without a way to receive requests.
void OfferScripting(LinkHandler openLink);

}  // namespace tessaro::platform
