#pragma once

#include <Foundation/NSObject.h>
