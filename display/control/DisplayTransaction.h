#pragma once

#include <cstdint>

/// The Mac's public display-configuration transactions, declared with plain types of the
/// same size. On a system without them the functions are null and must not be called.
///
/// `configuration` is the window server's handle of one transaction. All functions return 0
/// or the window server's status.
extern "C" {

/// Begins a transaction and sets `*configuration`. After a failure none has begun.
[[gnu::weak]] std::int32_t CGBeginDisplayConfiguration(void** configuration);

/// Drops a transaction with all the changes in it.
[[gnu::weak]] std::int32_t CGCancelDisplayConfiguration(void* configuration);

/// Makes the changes of a transaction. `option` says how long they last: 0 while the
/// application runs, 1 for the login session, 2 permanently.
[[gnu::weak]] std::int32_t CGCompleteDisplayConfiguration(void* configuration,
                                                          std::uint32_t option);
}
