// Files put together and taken apart byte by byte, with nothing of the library.
#ifndef TESTS_FILE_FILEBYTES_H
#define TESTS_FILE_FILEBYTES_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace FileBytes {

using TBytes = std::vector<unsigned char>;

// Pairs of hexadecimal digits; blanks between them are for the eye. Throws std::invalid_argument for anything else.
TBytes Hex(const std::string& pairs);
// The characters of a text and zeros up to `length`.
TBytes Padded(const std::string& text, std::size_t length);
TBytes Zeros(std::size_t count);
// Least significant byte first.
TBytes Number(std::uint32_t value);
TBytes Join(std::initializer_list<TBytes> parts);

// Overwrites four bytes.
void PutNumber(TBytes& bytes, std::size_t offset, std::uint32_t value);

void WriteFile(const std::string& path, const TBytes& bytes);
// Throws std::runtime_error when there is no such file.
TBytes ReadFile(const std::string& path);

// "6 bytes: 42 61 63 ..." around the first difference of two files; empty when they are equal.
std::string Difference(const TBytes& actual, const TBytes& expected);

} // namespace FileBytes

#endif
