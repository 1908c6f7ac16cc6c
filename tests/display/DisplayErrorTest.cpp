#include "display/DisplayError.h"

#include <gtest/gtest.h>

#include <limits>

namespace tavrel {
namespace {

using Reason = DisplayError::Reason;

TEST(DisplayError, LifecycleFailedNamesItsCode) {
    const DisplayError error = DisplayError::lifecycleFailed(1001);

    EXPECT_EQ(error.reason(), Reason::lifecycleFailed);
    EXPECT_EQ(error.code(), 1001);
    EXPECT_EQ(error.errorDescription(),
              "macOS couldn\u2019t change the desktop display layout (error 1001)");
}

TEST(DisplayError, LifecycleFailedTakesAnyCode) {
    const std::pair<ServerStatus, std::string> texts[] = {
        {0, "(error 0)"},
        {-1, "(error -1)"},
        {1000000, "(error 1000000)"},
        {std::numeric_limits<ServerStatus>::min(), "(error -2147483648)"},
        {std::numeric_limits<ServerStatus>::max(), "(error 2147483647)"},
    };
    for (const auto& [code, text] : texts) {
        EXPECT_EQ(DisplayError::lifecycleFailed(code).errorDescription(),
                  "macOS couldn\u2019t change the desktop display layout " + text);
    }
}

TEST(DisplayError, InvalidDisplayListHasItsText) {
    const DisplayError error = DisplayError::invalidDisplayList();

    EXPECT_EQ(error.reason(), Reason::invalidDisplayList);
    EXPECT_EQ(error.code(), 0);
    EXPECT_EQ(error.errorDescription(), "Couldn\u2019t understand the connected-display list");
}

TEST(DisplayError, LifecycleUnavailableHasItsText) {
    const DisplayError error = DisplayError::lifecycleUnavailable();

    EXPECT_EQ(error.reason(), Reason::lifecycleUnavailable);
    EXPECT_EQ(error.code(), 0);
    EXPECT_EQ(error.errorDescription(),
              "This macOS version doesn\u2019t expose display enable/disable control");
}

TEST(DisplayError, ReasonsAreInTheirOrder) {
    EXPECT_EQ(static_cast<int>(Reason::lifecycleFailed), 0);
    EXPECT_EQ(static_cast<int>(Reason::invalidDisplayList), 1);
    EXPECT_EQ(static_cast<int>(Reason::lifecycleUnavailable), 2);
}

TEST(DisplayError, HasNothingButItsDescription) {
    for (const DisplayError& error :
         {DisplayError::lifecycleFailed(1), DisplayError::invalidDisplayList(),
          DisplayError::lifecycleUnavailable()}) {
        EXPECT_EQ(error.failureReason(), std::nullopt);
        EXPECT_EQ(error.recoverySuggestion(), std::nullopt);
        EXPECT_EQ(error.helpAnchor(), std::nullopt);
    }
}

TEST(DisplayError, HasItsDescriptionAsTheTextOfAnyException) {
    try {
        throw DisplayError::lifecycleFailed(1004);
    } catch (const std::exception& error) {
        EXPECT_EQ(error.what(), DisplayError::lifecycleFailed(1004).errorDescription());
    }
}

}  // namespace
}  // namespace tavrel
