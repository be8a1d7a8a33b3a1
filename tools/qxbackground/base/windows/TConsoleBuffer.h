#ifndef QXBACKGROUND_BASE_WINDOWS_TCONSOLEBUFFER_H
#define QXBACKGROUND_BASE_WINDOWS_TCONSOLEBUFFER_H

#include <streambuf>
#include <string>

namespace workbench {

// Shows UTF-8 text on the console of the standard output, a line at a time. The C runtime hands letters to a console
// byte by byte, which then takes the bytes of one for several.
class TConsoleBuffer : public std::streambuf {
protected:
    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* text, std::streamsize count) override;
    int sync() override;

private:
    bool Show(std::size_t count);

    std::string held;
};

} // namespace workbench

#endif
