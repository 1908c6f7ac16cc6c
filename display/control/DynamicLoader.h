#pragma once

/// The system's dynamic loader. From any thread. What is opened stays open for the life
/// of the process.
namespace tavrel::DynamicLoader {

/// Opens the library at `path`, or finds it already open. `mode` is passed to the system
/// as it is. Null when the system cannot open it.
void* open(const char* path, int mode);

/// The address of `symbol` in the process's default namespace: the program and the
/// libraries it was started with. Null when there is none.
void* findInProcess(const char* symbol);

/// The address of `symbol` in a library that `open` gave. Null when it has none.
void* findInLibrary(void* library, const char* symbol);

}  // namespace tavrel::DynamicLoader
