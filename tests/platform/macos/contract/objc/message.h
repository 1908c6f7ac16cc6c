#pragma once

#include <objc/runtime.h>

extern "C" {

/// To be called only as what the method that is meant is: with its receiver, its selector
/// and its arguments, for its result.
void objc_msgSend(void);
}
