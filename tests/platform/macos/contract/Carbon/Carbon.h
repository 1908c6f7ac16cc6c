#pragma once

#include <MacTypes.h>

// Declares the part of the Mac's Carbon event manager that we call.

using EventRef = struct SimulatedEvent*;
using EventTargetRef = struct SimulatedEventTarget*;
using EventHandlerRef = struct SimulatedEventHandler*;
using EventHandlerCallRef = struct SimulatedEventHandlerCall*;
using EventHotKeyRef = struct SimulatedHotKey*;
using EventHandlerUPP = OSStatus (*)(EventHandlerCallRef next, EventRef event, void* userData);

enum : OSType { kEventClassKeyboard = 0x6B657962 };  // 'keyb'
enum : UInt32 { kEventHotKeyPressed = 5 };

struct EventTypeSpec {
    OSType eventClass;
    UInt32 eventKind;
};

struct EventHotKeyID {
    OSType signature;
    UInt32 id;
};

extern "C" {

EventTargetRef GetApplicationEventTarget();
OSStatus InstallEventHandler(EventTargetRef target, EventHandlerUPP handler, ItemCount typeCount,
                             const EventTypeSpec* types, void* userData,
                             EventHandlerRef* installed);
OSStatus RemoveEventHandler(EventHandlerRef handler);
OSStatus RegisterEventHotKey(UInt32 keyCode, UInt32 modifiers, EventHotKeyID id,
                             EventTargetRef target, OptionBits options, EventHotKeyRef* registered);
OSStatus UnregisterEventHotKey(EventHotKeyRef hotKey);
}
