#pragma once

#include <AppKit/AppKit.h>

#include "common-cc.h"
