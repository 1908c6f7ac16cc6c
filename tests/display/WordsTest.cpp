#include "platform/Words.h"

#include <gtest/gtest.h>

#include "display/DisplayError.h"

namespace tavrel {
namespace {

const Words others{.desktop = "The desktop", .thisSystem = "This desktop session"};

TEST(WordsTest, TheTextsOfErrorsAreInTheSystemsOwn) {
    EXPECT_EQ(DisplayError::lifecycleFailed(1001, others).errorDescription(),
              "The desktop couldn’t change the desktop display layout (error 1001)");
    EXPECT_EQ(DisplayError::lifecycleUnavailable(others).errorDescription(),
              "This desktop session doesn’t expose display enable/disable control");
}

}  // namespace
}  // namespace tavrel
