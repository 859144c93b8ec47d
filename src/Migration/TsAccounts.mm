#import "Migration/TsAccounts.h"

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsLog.h"
#import "Migration/TsMigration.h"
#import "Migration/TsSorting.h"

namespace {

struct SortKey {
  double order;
  NSString* username;

  bool operator<(const SortKey& other) const {
    if (order != other.order) return order < other.order;
    if (username == nil || other.username == nil) return username == nil && other.username != nil;
    return [username compare:other.username] == NSOrderedAscending;
  }
};

}  // namespace

@implementation TsAccounts

+ (TsAccounts*)sharedInstance {
  static Forever<Ref<TsAccounts>> accounts(
      Adopt([[TsAccounts alloc] initWithPath:[Adopt([[TsMigration alloc] init]) accountsPath]]));
  return *accounts;
}

- (instancetype)initWithPath:(NSString*)path {
  return [self initWithPath:path model:TsAccountsModel()];
}

- (NSArray*)all {
  NSError* error = nil;
  NSArray* accounts = [_context fetch:"Account" error:&error];
  if (accounts == nil) {
    TsLogWarning(@"Could not execute TsAccounts#all query. (%@)", error);
    return [NSArray array];
  }
  return TsSorted(accounts, [](TsAccount* account) { return SortKey{TsSortKey([account order]), [account username]}; });
}

// The first account whose value is `value`, but for the sender. nil, and the error, when they can't be fetched.
- (TsAccount*)findBy:(SEL)attribute value:(NSString*)value sender:(id)sender error:(NSError**)error {
  for (TsAccount* account in [_context fetch:"Account" error:error]) {
    NSString* own = [account performSelector:attribute];
    if (account != sender && (own == value || [own isEqualToString:value])) return account;
  }
  return nil;
}

- (TsAccount*)findByUsername:(NSString*)username {
  return [self findByUsername:username sender:nil];
}

- (TsAccount*)findByUsername:(NSString*)username sender:(id)sender {
  NSError* error = nil;
  TsAccount* account = [self findBy:@selector(username) value:username sender:sender error:&error];
  if (error != nil) TsLogWarning(@"Could not execute TsAccounts#findByUsername:'%@' query. (%@)", username, error);
  return account;
}

- (TsAccount*)findByNickname:(NSString*)nickname {
  return [self findByNickname:nickname sender:nil];
}

- (TsAccount*)findByNickname:(NSString*)nickname sender:(id)sender {
  NSError* error = nil;
  TsAccount* account = [self findBy:@selector(nickname) value:nickname sender:sender error:&error];
  if (error != nil) TsLogWarning(@"Could not execute TsAccounts#findByNickname:'%@' query. (%@)", nickname, error);
  return account;
}

- (BOOL)hasBookmarks {
  return [[_context fetch:"Bookmark" error:nullptr] count] > 0;
}

- (BOOL)isAccessible:(TsAccount*)account {
  return [_context contains:account];
}

@end
