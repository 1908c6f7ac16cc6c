#pragma once

#include <memory>

#include "platform/DisplayQueries.h"
#include "platform/Lid.h"
#include "platform/ReconfigurationReports.h"
#include "platform/ReportRegistration.h"

namespace tavrel {

/// A window server's answers with a laptop's lid in mind.
///
/// Under a closed lid the built-in display is neither online nor active, whatever the server
/// drives there: nobody sees it. It stays among all displays, for it is connected. A moment
/// asks the lid once.
class LidAwareQueries final : public DisplayQueries {
public:
    /// Both must outlive it.
    LidAwareQueries(DisplayQueries& inner, const Lid& lid) : inner_(inner), lid_(lid) {}

    std::unique_ptr<DisplayMoment> now() override;
    std::unique_ptr<DisplayMoment> lately() override;
    std::unique_ptr<DisplayMoment> nowAfterProbing() override;

private:
    DisplayQueries& inner_;
    const Lid& lid_;
};

/// A window server's reports, and one more for each change of the lid: it says that the layout
/// changed, not that a display came or went. So a closed lid makes nobody switch on what the
/// user has switched off, unless nothing usable is left.
class LidAwareReports final : public ReconfigurationReports {
public:
    /// Both must outlive it. It becomes the lid's observer.
    LidAwareReports(ReconfigurationReports& inner, Lid& lid);
    ~LidAwareReports() override;
    LidAwareReports(const LidAwareReports&) = delete;
    LidAwareReports& operator=(const LidAwareReports&) = delete;

    /// One pair at a time.
    ServerStatus registerCallback(DisplayReconfigurationCallback callback, void* userInfo) override;
    ServerStatus removeCallback(DisplayReconfigurationCallback callback, void* userInfo) override;

private:
    ReconfigurationReports& inner_;
    Lid& lid_;
    /// Who is told of the lid.
    ReportRegistration registered_;
};

}  // namespace tavrel
