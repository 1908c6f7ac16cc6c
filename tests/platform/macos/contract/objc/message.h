#pragma once

#include <objc/runtime.h>

extern "C" {

/// Must be cast, before it is called, to the type of the method that is meant: its result,
/// its receiver, its selector and its arguments.
void objc_msgSend(void);
}
