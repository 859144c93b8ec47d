#pragma once

#include "Base/Ref.h"

// The accessors of a property whose value is in a Ref: TS_COPIED(NSString, name, Name) for `_name`.

#define TS_COPIED(type, name, Name) \
  -(type*)name {                    \
    return _##name;                 \
  }                                 \
  -(void)set##Name : (type*)value { \
    _##name = Copy(value);          \
  }

#define TS_RETAINED(type, name, Name) \
  -(type*)name {                      \
    return _##name;                   \
  }                                   \
  -(void)set##Name : (type*)value {   \
    _##name = Retain(value);          \
  }
