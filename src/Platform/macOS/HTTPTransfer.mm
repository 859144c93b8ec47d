#include "Platform/HTTPTransfer.h"

#include <map>
#include <utility>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsString.h"
#include "Platform/Common/AutoreleaseScope.h"
#include "Platform/MainQueue.h"
#include "Platform/macOS/Guarded.h"

// NSURLSession: the system's proxies, certificates, decoders and redirects, on the main queue; nothing is kept between
// transfers but connections. The host's Info.plist may refuse http (App Transport Security). A body is read while the
// task is not suspended: it is suspended while a piece is with the client. What a body expands to is limited by the
// client's Keep(), as the system does not say how long it was before. No consent; main thread only.

namespace tessaro::platform {
class SystemTransfer;
}

@interface TsTransferDelegate : NSObject <NSURLSessionDataDelegate> {
  std::map<NSUInteger, tessaro::platform::SystemTransfer*> _transfers;
}
- (void)add:(tessaro::platform::SystemTransfer*)transfer task:(NSURLSessionTask*)task;
- (void)removeTask:(NSURLSessionTask*)task;
@end

namespace tessaro::platform {

namespace {

// The one session. Ends with the script environment.
class Session {
 public:
  static constexpr EndStage kEnd = EndStage::Services;

  static Session& Shared() {
    static Forever<Session> session;
    return *session;
  }

  [[nodiscard]] NSURLSession* session() const { return session_; }
  [[nodiscard]] TsTransferDelegate* delegate() const { return delegate_; }

  void Close() {
    [session_ invalidateAndCancel];
    session_ = nullptr;
  }

 private:
  friend class Forever<Session>;
  Session() : delegate_(Adopt([[TsTransferDelegate alloc] init])) {
    NSURLSessionConfiguration* configuration = [NSURLSessionConfiguration ephemeralSessionConfiguration];
    [configuration setHTTPCookieStorage:nil];
    [configuration setHTTPShouldSetCookies:NO];
    [configuration setURLCache:nil];
    [configuration setRequestCachePolicy:NSURLRequestReloadIgnoringLocalCacheData];
    session_ = Retain([NSURLSession sessionWithConfiguration:configuration
                                                    delegate:delegate_
                                               delegateQueue:[NSOperationQueue mainQueue]]);
  }

  Ref<TsTransferDelegate> delegate_;
  Ref<NSURLSession> session_;
};

// These are the system's to set.
bool IsOwnHeader(NSString* name) {
  return [name caseInsensitiveCompare:@"Content-Length"] == NSOrderedSame ||
         [name caseInsensitiveCompare:@"Transfer-Encoding"] == NSOrderedSame;
}

bool IsWeb(NSURL* url) {
  NSString* scheme = [[url scheme] lowercaseString];
  return [scheme isEqualToString:@"http"] || [scheme isEqualToString:@"https"];
}

// nil if the address is no http or https address.
NSMutableURLRequest* RequestOf(const HTTPRequest& request) {
  NSURL* url = [NSURL URLWithString:TsNSString(request.url)];
  if (!IsWeb(url)) return nil;
  NSMutableURLRequest* made = [NSMutableURLRequest requestWithURL:url];
  [made setHTTPMethod:TsNSString(request.method)];
  [made setHTTPShouldHandleCookies:NO];
  if (request.timeout && request.timeout->count() > 0) [made setTimeoutInterval:request.timeout->count()];
  for (const HTTPHeader& header : request.headers) {
    NSString* name = TsNSString(header.name);
    if (!IsOwnHeader(name)) [made addValue:TsNSString(header.value) forHTTPHeaderField:name];
  }
  return made;
}

}  // namespace

class SystemTransfer final : public HTTPTransfer {
 public:
  SystemTransfer(bool followsRedirects, HTTPTransferClient& client)
      : client_(client), followsRedirects_(followsRedirects) {}
  ~SystemTransfer() override {
    [task_ cancel];
    [Session::Shared().delegate() removeTask:task_];
  }

  void Begin(const HTTPRequest& request) {
    NSMutableURLRequest* made = RequestOf(request);
    if (made == nil || Session::Shared().session() == nil) return FailLater("this is no address of a web server");
    task_ = Retain([Session::Shared().session() dataTaskWithRequest:made]);
    [Session::Shared().delegate() add:this task:task_];
    [task_ resume];
  }

  void FailLater(std::string reason) {
    MainQueue::Shared().Post([isAlive = std::weak_ptr(isAlive_), this, reason = std::move(reason)] {
      if (!isAlive.expired()) client_.Ended(Fail(reason));
    });
  }

  // Whether the redirect is to be followed.
  [[nodiscard]] bool Redirect(NSHTTPURLResponse* response, NSURLRequest* next) {
    if (followsRedirects_ && IsWeb([next URL])) return true;
    client_.RefusedRedirect(static_cast<int>([response statusCode]), TsStdString([[next URL] absoluteString]));
    return false;
  }

  void Respond(NSURLResponse* response) {
    const bool isHTTP = [response isKindOfClass:[NSHTTPURLResponse class]];
    const auto* http = static_cast<NSHTTPURLResponse*>(isHTTP ? response : nil);
    client_.ReceivedResponse(static_cast<int>([http statusCode]));
  }

  // The client may destroy this object in each of these calls.
  void Receive(NSData* data) {
    __block bool isKept = true;
    [data enumerateByteRangesUsingBlock:^(const void* bytes, NSRange range, BOOL* stop) {
      isKept = client_.Keep({static_cast<const char*>(bytes), range.length});
      *stop = !isKept;
    }];
    if (!isKept) return End("the body can't be kept");
    client_.ReceivedData([data length]);
  }

  void End(const std::string& failure) {
    HTTPTransferClient& client = client_;
    [Session::Shared().delegate() removeTask:task_];
    [task_ cancel];
    task_ = nullptr;
    client.Ended(failure.empty() ? Result<void>() : Fail(failure));
  }

 private:
  HTTPTransferClient& client_;
  const bool followsRedirects_;
  Ref<NSURLSessionDataTask> task_;
  std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

std::unique_ptr<HTTPTransfer> HTTPTransfer::Start(const HTTPRequest& request, HTTPTransferClient& client) noexcept {
  auto transfer = std::make_unique<SystemTransfer>(request.followRedirects, client);
  const std::string failure = Guarded([&] { transfer->Begin(request); });
  if (!failure.empty()) transfer->FailLater(failure);
  return transfer;
}

}  // namespace tessaro::platform

@implementation TsTransferDelegate

- (void)add:(tessaro::platform::SystemTransfer*)transfer task:(NSURLSessionTask*)task {
  _transfers[[task taskIdentifier]] = transfer;
}

- (void)removeTask:(NSURLSessionTask*)task {
  if (task != nil) _transfers.erase([task taskIdentifier]);
}

- (tessaro::platform::SystemTransfer*)transferOf:(NSURLSessionTask*)task {
  const auto found = _transfers.find([task taskIdentifier]);
  return found != _transfers.end() ? found->second : nullptr;
}

- (void)URLSession:(NSURLSession*)session
                          task:(NSURLSessionTask*)task
    willPerformHTTPRedirection:(NSHTTPURLResponse*)response
                    newRequest:(NSURLRequest*)request
             completionHandler:(void (^)(NSURLRequest*))completionHandler {
  auto* transfer = [self transferOf:task];
  completionHandler(transfer != nullptr && transfer->Redirect(response, request) ? request : nil);
}

- (void)URLSession:(NSURLSession*)session
              dataTask:(NSURLSessionDataTask*)task
    didReceiveResponse:(NSURLResponse*)response
     completionHandler:(void (^)(NSURLSessionResponseDisposition))completionHandler {
  if (auto* transfer = [self transferOf:task]) transfer->Respond(response);
  completionHandler([self transferOf:task] != nullptr ? NSURLSessionResponseAllow : NSURLSessionResponseCancel);
}

- (void)URLSession:(NSURLSession*)session dataTask:(NSURLSessionDataTask*)task didReceiveData:(NSData*)data {
  auto* transfer = [self transferOf:task];
  if (transfer == nullptr) return;
  [task suspend];
  transfer->Receive(data);
  if ([self transferOf:task] != nullptr) [task resume];
}

- (void)URLSession:(NSURLSession*)session task:(NSURLSessionTask*)task didCompleteWithError:(NSError*)error {
  auto* transfer = [self transferOf:task];
  if (transfer != nullptr) transfer->End(error != nil ? TsStdString([error localizedDescription]) : "");
}

@end
