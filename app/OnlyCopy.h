#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/MainQueue.h"

namespace tavrel {

/// This process as the only copy of the application that its user has in this session: two
/// would switch on what the other has switched off. Main thread only.
class OnlyCopy {
public:
    /// What other programs on the desktop, another start of the application among them, ask
    /// of it.
    struct Handlers {
        /// To come to the front. The token, which may be empty, is what the window shows to a
        /// Wayland compositor to be given the focus.
        std::function<void(const std::string& activationToken)> activate;
        Task wake;
        Task refresh;
    };

    virtual ~OnlyCopy() = default;

    /// From now on, and for what was asked before, the handlers run on the main queue, which
    /// must outlive this. To be called once.
    virtual void serve(MainQueue& mainQueue, Handlers handlers) = 0;
};

/// Makes this process the only copy. Null when another one is there instead and has come to the
/// front: then this process has nothing left to do, and has touched nothing.
///
/// Blocks until that is known, as a rule for milliseconds. Where the session has no message bus,
/// a lock file tells; the other copy is then not called to the front. A bus that does not answer
/// for two seconds counts as none. A copy that does not come to the front in five seconds hangs,
/// and its user may be sitting there without a screen: this process then becomes a copy of its
/// own, but only one does, by the lock file. A copy that is about to end is waited for as long.
std::unique_ptr<OnlyCopy> becomeOnlyCopy();

}  // namespace tavrel
