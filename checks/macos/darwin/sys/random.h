#pragma once

#error "macOS has no getrandom(): arc4random_buf() of <stdlib.h> is on both systems"
