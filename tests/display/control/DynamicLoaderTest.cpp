// The loader itself, on a real library, and the names that it finds in the process.
#include "display/control/DynamicLoader.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "display/control/DisplayControl.h"

namespace tavrel {
namespace {

TEST(DynamicLoader, FindsInTheProcessOnlyWhatWasOpenedForAll) {
    void* const local = DynamicLoader::open(LOADABLE, RTLD_LAZY | RTLD_LOCAL);
    ASSERT_NE(local, nullptr);
    EXPECT_EQ(DynamicLoader::findInProcess("onlyInTheLibrary"), nullptr);

    EXPECT_EQ(DynamicLoader::open(LOADABLE, RTLD_LAZY | RTLD_GLOBAL), local);
    EXPECT_NE(DynamicLoader::findInProcess("onlyInTheLibrary"), nullptr);
}

TEST(DynamicLoader, FindsInALibraryWhatItHas) {
    void* const library = DynamicLoader::open(LOADABLE, RTLD_LAZY);
    ASSERT_NE(library, nullptr);

    const auto found =
        reinterpret_cast<int (*)()>(DynamicLoader::findInLibrary(library, "onlyInTheLibrary"));
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found(), 42);
    EXPECT_EQ(DynamicLoader::findInLibrary(library, "nowhere"), nullptr);
}

TEST(DynamicLoader, OpensNothingWhereThereIsNoLibrary) {
    EXPECT_EQ(DynamicLoader::open(LOADABLE ".not", RTLD_LAZY), nullptr);
}

TEST(DynamicLoader, FindsTheFunctionsOfDisplayControlByTheNamesTheyAreWrittenWith) {
    // For the linker, which takes only what is used.
    static_cast<void>(DCTLCanControlDisplays());

    for (const char* name :
         {"DCTLCanControlDisplays", "DCTLGetDisplayList", "DCTLSetDisplayEnabled",
          "resolveConfigureDisplayEnabled", "resolveGetDisplayList", "openSkyLight"}) {
        EXPECT_NE(DynamicLoader::findInProcess(name), nullptr) << name;
    }
}

}  // namespace
}  // namespace tavrel
