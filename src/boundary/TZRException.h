// The exception of the data layer. Interface operations turn it into a result code and a text; the two places where it
// reaches the host are named in the public header.
#ifndef BOUNDARY_TZREXCEPTION_H
#define BOUNDARY_TZREXCEPTION_H

#include <cstddef>
#include <exception>

// Carries a formatted text of at most 512 characters.
//
// The text lives inside the object: reporting that memory has run out must not need memory. The std::exception part has
// no text, so that a host's copy of that part alone refers to nothing that ends before it.
class TZRException : public std::exception {
public:
    static constexpr std::size_t kMaximumLength = 512;

    // Formats as printf does; a longer text is cut.
    explicit TZRException(const char* format, ...) noexcept;
    TZRException(const TZRException&) noexcept = default;
    TZRException& operator=(const TZRException&) noexcept = default;
    ~TZRException() override;

    // The text; valid while the object lives.
    const char* what() const noexcept override { return text; }

private:
    char text[kMaximumLength + 1];
};

#endif
