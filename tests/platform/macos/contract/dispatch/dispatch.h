#pragma once

#include <cstdint>

// Declares the part of the Mac's dispatch library that we call.

using dispatch_queue_t = struct SimulatedDispatchQueue*;
using dispatch_function_t = void (*)(void* context);

enum qos_class_t : unsigned int { QOS_CLASS_USER_INITIATED = 0x19 };

extern "C" {

dispatch_queue_t dispatch_get_global_queue(std::intptr_t identifier, std::uintptr_t flags);
void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work);
}
