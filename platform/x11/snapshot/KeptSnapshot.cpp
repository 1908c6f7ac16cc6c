#include "platform/x11/snapshot/KeptSnapshot.h"

#include <xcb/randr.h>

#include <algorithm>
#include <utility>

#include "platform/x11/snapshot/Replies.h"

namespace tavrel::x11 {

namespace {

// How to see for a few hundred bytes, in one round trip, that a layout is still the one that
// was read whole. It costs no probing: RandR 1.5's GetMonitors answers from the server's memory,
// where GetScreenInfo, which has the stamps too, makes the server look for monitors.
//
// A server tells the times of two changes. What moves them, from the RandR protocol and as seen
// at Xorg 21.1 with the dummy driver:
//
// - the time of the layout, in each GetOutputInfo: each successful SetCrtcConfig, so whatever a
//   client changes about a CRTC. Not a new size of the screen, not another primary output, and
//   nothing that a driver does by itself. A graphics card that only lends its outputs has a time
//   of its own.
// - the time of the configuration, in GetMonitors: an output that counts as connected, or no
//   longer, and a mode that comes to an output. Not a mode that leaves one, of which there is no
//   event either, and not an EDID.
//
// So the stamps alone could miss something, and these are asked as well: which CRTCs are on,
// where, with which outputs, and the primary one among them (GetMonitors); the screen's size
// (GetGeometry); of one display that is on, whether it is still connected and driven; and of one
// thing more, whatever remains. So what moves no stamp shows after one round of questions at the
// latest, and that a lone display has gone shows at once.

using Question = Sign::Question;

/// Sends it, and returns its number.
unsigned int put(Connection& connection, const Sign& sign, std::uint32_t configTimestamp) {
    xcb_connection_t* xcb = connection.get();
    switch (sign.question) {
        case Question::monitors:
            return xcb_randr_get_monitors(xcb, connection.root(), 1).sequence;
        case Question::screenSize:
            return xcb_get_geometry(xcb, connection.root()).sequence;
        case Question::output:
            return xcb_randr_get_output_info(xcb, sign.output, configTimestamp).sequence;
        case Question::edid: {
            // Only what tells monitors apart: maker, model and serial number.
            constexpr std::uint32_t firstWord = 2;
            constexpr std::uint32_t words = 2;
            return xcb_randr_get_output_property(xcb, sign.output, connection.edidAtom(),
                                                 XCB_ATOM_ANY, firstWord, words, 0, 0)
                .sequence;
        }
        case Question::primary:
            break;
    }
    return xcb_randr_get_output_primary(xcb, connection.root()).sequence;
}

/// Empty when there is no answer.
std::vector<std::uint8_t> await(Connection& connection, unsigned int request) {
    const auto reply = connection.reply<xcb_generic_reply_t>(request);
    if (reply == nullptr) {
        return {};
    }
    reply->sequence = 0;
    const ReplyBytes bytes = bytesOf(*reply);
    return {bytes.begin(), bytes.end()};
}

/// Asks all before it awaits the first, so that it takes one round trip.
std::vector<std::vector<std::uint8_t>> ask(Connection& connection,
                                           const std::vector<const Sign*>& signs,
                                           std::uint32_t configTimestamp) {
    std::vector<unsigned int> requests(signs.size());
    for (std::size_t i = 0; i < signs.size(); ++i) {
        requests[i] = put(connection, *signs[i], configTimestamp);
    }
    std::vector<std::vector<std::uint8_t>> answers(signs.size());
    for (std::size_t i = 0; i < signs.size(); ++i) {
        answers[i] = await(connection, requests[i]);
    }
    return answers;
}

bool readAll(Connection& connection, LayoutSigns& signs) {
    std::vector<Sign*> all;
    for (auto* some : {&signs.general, &signs.shown, &signs.further}) {
        for (Sign& sign : *some) {
            all.push_back(&sign);
        }
    }
    auto answers = ask(connection, {all.begin(), all.end()}, signs.configTimestamp);
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i]->answer = std::move(answers[i]);
    }
    return std::none_of(all.begin(), all.end(),
                        [](const Sign* sign) { return sign->answer.empty(); });
}

LayoutSigns questionsAbout(const Snapshot& snapshot) {
    LayoutSigns signs{.configTimestamp = snapshot.configTimestamp,
                      .general = {{Question::monitors}, {Question::screenSize}},
                      .shown = {},
                      .further = {{Question::primary}}};
    for (const Output& output : snapshot.outputs) {
        const bool isShown = output.connected && snapshot.activeCrtc(output) != nullptr;
        (isShown ? signs.shown : signs.further).push_back({Question::output, output.id});
        if (output.connected) {
            signs.further.push_back({Question::edid, output.id});
        }
    }
    return signs;
}

/// The signs of the layout in `snapshot`, as they are now. std::nullopt when the connection is
/// lost, a question has no answer, or the server has no list of monitors.
std::optional<LayoutSigns> readSigns(Connection& connection, const Snapshot& snapshot) {
    if (!connection.listsMonitors()) {
        return std::nullopt;
    }
    LayoutSigns signs = questionsAbout(snapshot);
    return readAll(connection, signs) ? std::optional(std::move(signs)) : std::nullopt;
}

/// Asks for all that is general, one of those shown and one further sign, and returns whether
/// each is as in `signs`. Both are the next ones with the next `turn`. False when the connection
/// is lost.
bool areSame(Connection& connection, const LayoutSigns& signs, std::size_t turn) {
    std::vector<const Sign*> asked;
    for (const Sign& sign : signs.general) {
        asked.push_back(&sign);
    }
    for (const auto* inTurn : {&signs.shown, &signs.further}) {
        if (!inTurn->empty()) {
            asked.push_back(&(*inTurn)[turn % inTurn->size()]);
        }
    }
    const auto answers = ask(connection, asked, signs.configTimestamp);
    return std::equal(asked.begin(), asked.end(), answers.begin(), answers.end(),
                      [](const Sign* sign, const auto& answer) { return sign->answer == answer; });
}

}  // namespace

KeptSnapshot::KeptSnapshot(Connection& connection) : connection_(connection) {
    connection.selectRandrEvents(
        XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
        XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE | XCB_RANDR_NOTIFY_MASK_OUTPUT_PROPERTY);
}

std::shared_ptr<const Snapshot> KeptSnapshot::read(Probing probing) {
    if (probing != Probing::never || !isStillShown()) {
        readWhole(probing);
    }
    return snapshot_;
}

bool KeptSnapshot::isStillShown() {
    // Events come before the answers to what was asked after the change.
    return isSettled_ && !connection_.discardEvents() && areSame(connection_, *signs_, turn_++) &&
           !connection_.discardEvents();
}

void KeptSnapshot::readWhole(Probing probing) {
    // Those of before are no news to a reading that begins now.
    connection_.discardEvents();
    std::optional<Snapshot> snapshot = readSnapshot(connection_, probing);
    std::optional<LayoutSigns> signs =
        snapshot.has_value() ? readSigns(connection_, *snapshot) : std::nullopt;
    const bool isSame =
        signs.has_value() && signs == signs_ && snapshot_ != nullptr && snapshot == *snapshot_;
    isSettled_ = isSame && !connection_.discardEvents();
    snapshot_ =
        snapshot.has_value() ? std::make_shared<const Snapshot>(*std::move(snapshot)) : nullptr;
    signs_ = std::move(signs);
}

}  // namespace tavrel::x11
