#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Input = std::vector<std::uint8_t>;

std::vector<Input> readCorpus(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    std::vector<Input> inputs;
    for (const auto& file : files) {
        std::ifstream stream(file, std::ios::binary);
        inputs.emplace_back(std::istreambuf_iterator<char>(stream),
                            std::istreambuf_iterator<char>());
    }
    return inputs;
}

/// Damages it in one of the ways that matter to a reader: a wrong byte, a byte too many or too
/// few, a repeated part, an early end.
void damage(Input& input, std::mt19937& random) {
    const auto below = [&](std::size_t bound) { return random() % bound; };
    const auto at = [&] {
        return input.begin() + static_cast<std::ptrdiff_t>(below(input.size()));
    };
    if (input.empty()) {
        input.push_back(static_cast<std::uint8_t>(random()));
        return;
    }
    switch (below(5)) {
        case 0:
            *at() = static_cast<std::uint8_t>(random());
            break;
        case 1:
            input.insert(at(), static_cast<std::uint8_t>(random()));
            break;
        case 2:
            input.erase(at());
            break;
        case 3: {
            const Input part(at(), input.end());
            std::copy(part.begin(), part.end(), std::back_inserter(input));
            break;
        }
        default:
            input.erase(at(), input.end());
    }
}

}  // namespace

/// Runs a fuzz target without a fuzzer: over each file of a corpus, and over that many
/// damaged copies of them. The damage is the same in each run.
int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: " << argv[0] << " CORPUS-FOLDER DAMAGED-COPIES\n";
        return 2;
    }
    const std::vector<Input> corpus = readCorpus(argv[1]);
    if (corpus.empty()) {
        std::cerr << "the corpus is empty: " << argv[1] << '\n';
        return 1;
    }
    for (const Input& input : corpus) {
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }
    std::mt19937 random(1);  // Each run is to be the same.
    const int copies = std::atoi(argv[2]);
    for (int copy = 0; copy < copies; ++copy) {
        Input input = corpus[random() % corpus.size()];
        for (auto times = 1 + random() % 4; times > 0; --times) {
            damage(input, random);
        }
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }
    std::cout << corpus.size() << " inputs and " << copies << " damaged copies of them\n";
}
