#pragma once

#error "this is Linux's"
