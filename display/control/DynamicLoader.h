#pragma once

/// The system's dynamic loader. Can be called on any thread. A library that has been opened
/// stays open for the life of the process.
namespace tavrel::DynamicLoader {

/// Opens the library at `path`, or finds it already open. `mode` is passed on to the system
/// unchanged. Returns null when the system cannot open the library.
void* open(const char* path, int mode);

/// Returns the address of `symbol` in the process's default namespace (the program and the
/// libraries it was started with); null when it is not there.
void* findInProcess(const char* symbol);

/// Returns the address of `symbol` in a library that `open` returned; null when the library
/// does not have it.
void* findInLibrary(void* library, const char* symbol);

}  // namespace tavrel::DynamicLoader
