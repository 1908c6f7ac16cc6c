#include "platform/x11/snapshot/LayoutSigns.h"

#include <xcb/randr.h>

#include <algorithm>
#include <utility>

#include "platform/x11/snapshot/Replies.h"

namespace tavrel::x11 {

namespace {

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

}  // namespace

std::optional<LayoutSigns> readSigns(Connection& connection, const Snapshot& snapshot) {
    if (!connection.listsMonitors()) {
        return std::nullopt;
    }
    LayoutSigns signs = questionsAbout(snapshot);
    return readAll(connection, signs) ? std::optional(std::move(signs)) : std::nullopt;
}

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

}  // namespace tavrel::x11
