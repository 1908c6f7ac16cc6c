#pragma once

#include <cstdint>

/// The Mac's public display-configuration transactions, declared with plain types of the
/// same size. Where the system has none they are null and must not be called.
///
/// `configuration` is the server's handle of one transaction. All return 0 or the window
/// server's status.
extern "C" {

/// Begins a transaction and sets `*configuration`; after a failure nothing has begun.
[[gnu::weak]] std::int32_t CGBeginDisplayConfiguration(void** configuration);

/// Drops a transaction with all that was asked for in it.
[[gnu::weak]] std::int32_t CGCancelDisplayConfiguration(void* configuration);

/// Carries a transaction out. `option` says how long it shall last: 0 while the
/// application runs, 1 for the login session, 2 permanently.
[[gnu::weak]] std::int32_t CGCompleteDisplayConfiguration(void* configuration,
                                                          std::uint32_t option);
}
