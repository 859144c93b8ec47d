#pragma once

#include_next <fcntl.h>
#define F_FULLFSYNC 51
#undef O_PATH
#undef O_TMPFILE
