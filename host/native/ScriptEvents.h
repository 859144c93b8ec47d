#pragma once

#import <Foundation/NSString.h>
#include <node_api.h>

#include "native/ScriptContext.h"

// Sends the application's events to one script function. Main thread only.
class ScriptEvents {
 public:
  explicit ScriptEvents(const ScriptContext& script) : script_(script) {}
  ~ScriptEvents() { Clear(); }
  ScriptEvents(const ScriptEvents&) = delete;
  ScriptEvents& operator=(const ScriptEvents&) = delete;

  // The function that receives every event, as (name, payload).
  void SetHandler(napi_value function);
  void Clear();

  // `payload` crosses by content (see ScriptValues.h). Without a handler events are dropped.
  void Emit(NSString* name, id payload) const;

 private:
  const ScriptContext& script_;
  napi_ref handler_ = nullptr;
};
