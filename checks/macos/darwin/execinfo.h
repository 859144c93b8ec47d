#pragma once

extern "C" int backtrace(void** frames, int count);
