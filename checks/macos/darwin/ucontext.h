#pragma once

#include <signal.h>
