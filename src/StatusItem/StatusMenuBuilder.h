#pragma once

#import "Platform/Cocoa.h"

enum class StatusMenuForm {
  Full,     // each account with its unread messages
  Compact,  // one row an account
};

// Builds the account menu that script describes by `contents` into an empty menu. Values of a wrong type count as
// absent. `target` gets the actions of all rows. The arguments must outlive the builder.
class StatusMenuBuilder {
 public:
  StatusMenuBuilder(NSMenu* menu, id target, NSDictionary* contents);

  void Build(StatusMenuForm form, bool doNotDisturb) const;

 private:
  struct Account;

  void AddCommands(bool doNotDisturb) const;
  void AddCompactAccount(const Account& account, bool doNotDisturb) const;
  void AddFullAccount(const Account& account, bool doNotDisturb) const;
  void AddMessage(NSDictionary* message) const;
  void AddSeparator() const;
  void Add(NSMenuItem* item, id identifier) const;
  [[nodiscard]] NSString* CompactTitle(const Account& account, bool doNotDisturb) const;
  [[nodiscard]] NSString* Translation(NSString* key) const;

  NSMenu* menu_;
  id target_;
  NSArray* accounts_;
  NSDictionary* translations_;
};
