#pragma once

// Of the Mac's Objective-C runtime what is called here, and no more.

using Class = struct SimulatedClass*;
using id = struct SimulatedObject*;
using SEL = struct SimulatedSelector*;

extern "C" {

Class objc_getClass(const char* name);
SEL sel_registerName(const char* name);
}
