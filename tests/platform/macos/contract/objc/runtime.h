#pragma once

// Declares the part of the Mac's Objective-C runtime that we call.

using Class = struct SimulatedClass*;
using id = struct SimulatedObject*;
using SEL = struct SimulatedSelector*;

extern "C" {

Class objc_getClass(const char* name);
SEL sel_registerName(const char* name);
}
