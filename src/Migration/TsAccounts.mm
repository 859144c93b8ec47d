
#include <utility>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsString.h"
#import "Migration/TsMigration.h"

@implementation TsAccounts

+ (TsAccounts*)sharedInstance {
  static Forever<Ref<TsAccounts>> accounts(
      Adopt([[TsAccounts alloc] initWithPath:[Adopt([[TsMigration alloc] init]) accountsPath]]));
  return *accounts;
}

- (NSArray*)all {
  NSArray* accounts = [self fetch:"Account" forQuery:@"TsAccounts#all"];
  return TsSorted(accounts, [](TsAccount* account) {
    return std::pair(TsSortKey([account order]), TsCharacters([account username]));
  });
}

// The first account whose value is `value`, but for the sender.
- (TsAccount*)find:(NSString*)attribute value:(NSString*)value sender:(id)sender forQuery:(NSString*)query {
  for (TsAccount* account in [self fetch:"Account" forQuery:query]) {
    NSString* own = [[account values] objectForKey:attribute];
    if (account != sender && (own == value || [own isEqualToString:value])) return account;
  }
  return nil;
}

- (TsAccount*)findByUsername:(NSString*)username {
  return [self findByUsername:username sender:nil];
}

- (TsAccount*)findByUsername:(NSString*)username sender:(id)sender {
  NSString* query = [NSString stringWithFormat:@"TsAccounts#findByUsername:'%@'", username];
  return [self find:@"username" value:username sender:sender forQuery:query];
}

- (TsAccount*)findByNickname:(NSString*)nickname {
  return [self findByNickname:nickname sender:nil];
}

- (TsAccount*)findByNickname:(NSString*)nickname sender:(id)sender {
  NSString* query = [NSString stringWithFormat:@"TsAccounts#findByNickname:'%@'", nickname];
  return [self find:@"nickname" value:nickname sender:sender forQuery:query];
}

- (BOOL)hasBookmarks {
  return [[_context fetch:"Bookmark" error:nullptr] count] > 0;
}

- (BOOL)isAccessible:(TsAccount*)account {
  return [_context contains:account];
}

@end
