// The workbench's SHA-256: the examples that its standard and others publish, and the processor's instructions against
// the plain arithmetic, for every length around the ends of blocks and in pieces of any size.
#include "base/Sha256Blocks.h"
#include "base/Sha256Lanes.h"
#include "base/TSha256.h"

#include <algorithm>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {

using workbench::TSha256;

int failures = 0;

void Expect(const std::string& found, const std::string& expected, const std::string& what)
{
    if (found == expected)
        return;
    std::printf("%s: %s instead of %s\n", what.c_str(), found.c_str(), expected.c_str());
    ++failures;
}

std::string Digest(const std::string& text, bool plain)
{
    TSha256 sha256(plain);
    sha256.Add(text.data(), text.size());
    return sha256.Hex();
}

void TryPublishedExamples()
{
    const struct {
        std::string text, digest;
    } examples[] = {
        {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {"abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmnoijklmnopjklmnopqklmnopqrlmnopqrsmnopqrstnopqr"
         "stu",
         "cf5b16a778af8380036ce59e7b0492370b249b11e8f07a51afac45037afee9d1"},
        {std::string(1000000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
    };
    for (const auto& example : examples) {
        for (const bool plain : {true, false})
            Expect(Digest(example.text, plain), example.digest, std::to_string(example.text.size()) + " bytes");
    }
}

// As many as are taken in at once, and others behind them; each with another beginning, so that none of them ends a
// block where the others do.
void TryTogether(const std::string& text, std::mt19937& random)
{
    constexpr std::size_t kTexts = 16 + 16 + 2 + 1;
    std::vector<std::string> texts;
    std::vector<TSha256> sums(kTexts);
    for (std::size_t i = 0; i < kTexts; ++i) {
        texts.push_back(std::string(i % 16 == 3 ? random() % 100 : i / 16, 'x') + text);
        for (std::size_t byte = 0; byte < texts[i].size(); byte += i + 1)
            texts[i][byte] = static_cast<char>(random());
    }
    std::vector<std::size_t> at(kTexts);
    for (std::size_t i = 0; i < kTexts; ++i) {
        at[i] = texts[i].size() - text.size();
        sums[i].Add(texts[i].data(), at[i]);
    }
    for (std::size_t left = text.size(); left > 0;) {
        const std::size_t count = std::min<std::size_t>(left, random() % 200);
        std::vector<TSha256::TPart> parts;
        for (std::size_t i = 0; i < kTexts; ++i) {
            parts.push_back({&sums[i], texts[i].data() + at[i]});
            at[i] += count;
        }
        TSha256::Add(parts.data(), parts.size(), count);
        left -= count;
    }
    for (std::size_t i = 0; i < kTexts; ++i)
        Expect(sums[i].Hex(), Digest(texts[i], true),
               std::to_string(text.size()) + " bytes, number " + std::to_string(i) + " of several");
}

void TryPieces()
{
    std::mt19937 random(5);
    std::string text;
    for (int length = 0; length < 300; ++length) {
        const std::string expected = Digest(text, true);
        Expect(Digest(text, false), expected, "the first " + std::to_string(length) + " bytes");
        TSha256 sha256;
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t count = std::min<std::size_t>(random() % 130, text.size() - at);
            sha256.Add(text.data() + at, count);
            at += count;
        }
        Expect(sha256.Hex(), expected, std::to_string(length) + " bytes in pieces");
        TryTogether(text, random);
        text += static_cast<char>(random());
    }
}

} // namespace

int main()
{
    TryPublishedExamples();
    TryPieces();
    const auto has = [](bool it) { return it ? "yes" : "none"; };
    std::printf("instructions of the processor: %s, wide registers: %s; %d failures\n",
                has(workbench::Sha256BlocksOfProcessor() != nullptr),
                has(workbench::Sha256LaneBlocksOfProcessor() != nullptr), failures);
    return failures == 0 ? 0 : 1;
}
