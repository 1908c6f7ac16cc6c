#include "platform/x11/snapshot/Replies.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/platform/x11/snapshot/ReplyBuilder.h"
#include "tests/platform/x11/snapshot/SnapshotBuilder.h"

namespace tavrel::x11 {
namespace {

const layout::EdidNumbers monitor{.vendor = 0x1E6D, .product = 0x1234, .serial = 0xF2345678};

/// Two outputs, one on, with all that a reply can tell of them.
Snapshot someDesk() {
    Snapshot desk = SnapshotBuilder().output("eDP-1").on(0, 0).output("DP-1").build();
    desk.layoutTimestamp = 7;
    desk.configTimestamp = 5;
    desk.outputs[0].clones = {101};
    desk.outputs[0].edid = monitor;
    desk.outputs[0].monitor = layout::monitorName(edidBlock(monitor));
    desk.crtcs[0].outputs = {100};
    desk.crtcs[0].transform.filter = "bilinear";
    desk.crtcs[0].transform.parameters = {1, -2, 3};
    desk.crtcs[0].supportsTransforms = true;
    return desk;
}

TEST(RepliesTest, ResourcesAreReadWithTheirModes) {
    const Snapshot desk = someDesk();

    const auto outline = readResources(resourcesReply(desk));

    ASSERT_TRUE(outline.has_value());
    EXPECT_EQ(outline->modes, desk.modes);
    EXPECT_EQ(outline->layoutTimestamp, 7U);
    EXPECT_EQ(outline->configTimestamp, 5U);
    ASSERT_EQ(outline->crtcs.size(), 2U);
    EXPECT_EQ(outline->crtcs[1].id, desk.crtcs[1].id);
    ASSERT_EQ(outline->outputs.size(), 2U);
    EXPECT_EQ(outline->outputs[1].id, desk.outputs[1].id);
}

TEST(RepliesTest, ACrtcIsReadFromItsTwoReplies) {
    const Crtc was = someDesk().crtcs[0];

    Crtc crtc;
    crtc.id = was.id;
    EXPECT_TRUE(readCrtcInfo(crtcInfoReply(was), crtc));
    EXPECT_TRUE(readCrtcTransform(crtcTransformReply(was), crtc));

    EXPECT_EQ(crtc, was);
}

TEST(RepliesTest, ARotationThatIsNoneIsTakenForUpright) {
    Crtc was = someDesk().crtcs[0];
    was.rotation = layout::rotate90 | layout::rotate180;
    Crtc crtc;

    EXPECT_TRUE(readCrtcInfo(crtcInfoReply(was), crtc));

    EXPECT_EQ(crtc.rotation, layout::rotate0);
}

TEST(RepliesTest, OfACrtcThatIsOffTheNextTransformIsRead) {
    Reply reply = crtcTransformReply(someDesk().crtcs[0]);
    // The first number of the one in force, behind the head's 8 bytes, the next one's 36, and 4.
    reply.at(48) ^= 1U;
    Crtc off;
    Crtc on;
    on.mode = 1;

    ASSERT_TRUE(readCrtcTransform(reply, off));
    ASSERT_TRUE(readCrtcTransform(reply, on));

    EXPECT_EQ(off.transform, someDesk().crtcs[0].transform);
    EXPECT_NE(on.transform, off.transform);
}

TEST(RepliesTest, AnOutputIsReadFromItsTwoReplies) {
    const Output was = someDesk().outputs[0];

    Output output;
    output.id = was.id;
    EXPECT_TRUE(readOutputInfo(outputInfoReply(was), output));
    EXPECT_TRUE(readOutputEdid(edidReply(monitor), output));

    EXPECT_EQ(output, was);
}

TEST(RepliesTest, WhatMayBeConnectedCountsAsConnectedWhileItIsDriven) {
    for (const Output& was : someDesk().outputs) {
        Reply reply = outputInfoReply(was);
        // Behind the head's 8 bytes, a time, the CRTC and the size.
        constexpr std::size_t connection = 24;
        constexpr std::uint8_t unknown = 2;
        reply.at(connection) = unknown;
        Output output;

        ASSERT_TRUE(readOutputInfo(reply, output));

        EXPECT_EQ(output.connected, was.crtc != 0);
    }
}

TEST(RepliesTest, AnEdidThatIsNotMadeOfBytesSaysNothing) {
    Reply reply = edidReply(monitor);
    reply.at(1) = 32;
    Output output;

    EXPECT_TRUE(readOutputEdid(reply, output));

    EXPECT_EQ(output.edid, layout::EdidNumbers());
}

TEST(RepliesTest, WhatTheServerCallsOutdatedIsRefused) {
    constexpr std::uint8_t outdated = 1;
    Reply crtcInfo = crtcInfoReply(someDesk().crtcs[0]);
    Reply outputInfo = outputInfoReply(someDesk().outputs[0]);
    crtcInfo.at(1) = outdated;
    outputInfo.at(1) = outdated;
    Crtc crtc;
    Output output;

    EXPECT_FALSE(readCrtcInfo(crtcInfo, crtc));
    EXPECT_FALSE(readOutputInfo(outputInfo, output));

    EXPECT_EQ(crtc, Crtc());
    EXPECT_EQ(output, Output());
}

TEST(RepliesTest, AReplyThatEndsBeforeWhatItPromisesIsRefused) {
    const Snapshot desk = someDesk();
    Crtc crtc;
    Output output;
    struct Case {
        std::string name;
        Reply reply;
        std::function<bool(ReplyBytes)> isTaken;
    };
    const std::vector<Case> cases{
        {"resources", resourcesReply(desk),
         [](ReplyBytes bytes) { return readResources(bytes).has_value(); }},
        {"CRTC", crtcInfoReply(desk.crtcs[0]),
         [&](ReplyBytes bytes) { return readCrtcInfo(bytes, crtc); }},
        {"transform", crtcTransformReply(desk.crtcs[0]),
         [&](ReplyBytes bytes) { return readCrtcTransform(bytes, crtc); }},
        {"output", outputInfoReply(desk.outputs[0]),
         [&](ReplyBytes bytes) { return readOutputInfo(bytes, output); }},
        {"EDID", edidReply(monitor),
         [&](ReplyBytes bytes) { return readOutputEdid(bytes, output); }}};

    for (const Case& each : cases) {
        for (std::size_t size = 0; size < each.reply.size(); ++size) {
            // A copy of just that size, so that a sanitizer sees what is read beyond it.
            const Reply cut(each.reply.begin(),
                            each.reply.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_FALSE(each.isTaken(cut)) << each.name << ", " << size << " bytes";
        }
        EXPECT_TRUE(each.isTaken(each.reply)) << each.name;
    }
}

}  // namespace
}  // namespace tavrel::x11
