#include "file/FileBytes.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace FileBytes {

namespace {

unsigned int Digit(char character)
{
    const std::string digits = "0123456789ABCDEF";
    const std::size_t value = digits.find(character);
    if (value == std::string::npos) {
        throw std::invalid_argument(std::string("not a hexadecimal digit: ") + character);
    }
    return static_cast<unsigned int>(value);
}

std::string Excerpt(const TBytes& bytes, std::size_t offset)
{
    std::string text = std::to_string(bytes.size()) + " bytes, there:";
    for (std::size_t i = offset; i < std::min(bytes.size(), offset + 16); ++i) {
        char pair[4];
        std::snprintf(pair, sizeof pair, " %02X", static_cast<unsigned int>(bytes[i]));
        text += pair;
    }
    return text;
}

} // namespace

TBytes Hex(const std::string& pairs)
{
    TBytes bytes;
    for (std::size_t i = 0; i < pairs.size();) {
        if (pairs[i] == ' ') {
            ++i;
            continue;
        }
        if (i + 1 == pairs.size()) {
            throw std::invalid_argument("half a byte at the end");
        }
        bytes.push_back(static_cast<unsigned char>(Digit(pairs[i]) * 16 + Digit(pairs[i + 1])));
        i += 2;
    }
    return bytes;
}

TBytes Padded(const std::string& text, std::size_t length)
{
    TBytes bytes(text.begin(), text.end());
    if (bytes.size() > length) {
        throw std::invalid_argument("the text does not fit");
    }
    bytes.resize(length, 0);
    return bytes;
}

TBytes Zeros(std::size_t count)
{
    return TBytes(count, 0);
}

TBytes Number(std::uint32_t value)
{
    TBytes bytes(4);
    PutNumber(bytes, 0, value);
    return bytes;
}

TBytes Join(std::initializer_list<TBytes> parts)
{
    TBytes whole;
    for (const TBytes& part : parts) {
        whole.insert(whole.end(), part.begin(), part.end());
    }
    return whole;
}

void PutNumber(TBytes& bytes, std::size_t offset, std::uint32_t value)
{
    for (std::size_t i = 0; i < 4; ++i) {
        bytes.at(offset + i) = static_cast<unsigned char>(value >> (8 * i) & 0xFF);
    }
}

void WriteFile(const std::string& path, const TBytes& bytes)
{
    // A new file each time: some file systems store a file that is truncated and written again at once, and wait for
    // it.
    std::remove(path.c_str());
    std::ofstream file(path, std::ios::binary);
    if (!bytes.empty()) {
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + path);
    }
}

TBytes ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
    return TBytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

std::string Difference(const TBytes& actual, const TBytes& expected)
{
    if (actual == expected) {
        return {};
    }
    const std::size_t common = std::min(actual.size(), expected.size());
    std::size_t offset = 0;
    while (offset < common && actual[offset] == expected[offset]) {
        ++offset;
    }
    return "the files differ from offset " + std::to_string(offset) + " on\n  actual:   " + Excerpt(actual, offset) +
           "\n  expected: " + Excerpt(expected, offset);
}

} // namespace FileBytes
