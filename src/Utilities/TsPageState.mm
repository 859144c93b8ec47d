#include "Utilities/TsPageState.h"

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Utilities/TsCallbackSlot.h"

namespace {

struct PageState {
  Ref<NSString> url;
  Ref<NSString> webURL;
  Ref<NSString> title;
};

PageState& Page() {
  static Forever<PageState> page;
  return *page;
}

// The caller may go on using the text after the page has changed.
NSString* Autoreleased(Ref<NSString> text) { return text.Autoreleased(); }

}  // namespace

void SetCurrentURL(NSString* url, NSString* webURL, NSString* title) {
  Page() = {.url = Copy(url), .webURL = Copy(webURL), .title = Copy(title)};
}

NSString* GetCurrentURL() { return Autoreleased(Page().url); }

NSString* GetCurrentWebURL() { return Autoreleased(Page().webURL); }

NSString* GetCurrentTitle() { return Autoreleased(Page().title); }

NSString* GetCurrentMessageText() { return TsCallback(TsSlot::CurrentState).CallForString({@"current-message-text"}); }
