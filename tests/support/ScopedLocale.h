// A number format with a decimal comma, for as long as the object lives.
#ifndef QXBC_TESTS_SCOPED_LOCALE_H
#define QXBC_TESTS_SCOPED_LOCALE_H

#include <clocale>
#include <string>

class TScopedCommaLocale {
public:
    TScopedCommaLocale() : before(std::setlocale(LC_ALL, nullptr))
    {
        for (const char* const name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "German_Germany.1252"}) {
            if (std::setlocale(LC_ALL, name) != nullptr && std::localeconv()->decimal_point[0] == ',') {
                isSet = true;
                return;
            }
        }
    }
    ~TScopedCommaLocale() { std::setlocale(LC_ALL, before.c_str()); }
    TScopedCommaLocale(const TScopedCommaLocale&) = delete;
    TScopedCommaLocale& operator=(const TScopedCommaLocale&) = delete;

    // False when the system has no such locale installed.
    bool IsSet() const { return isSet; }

private:
    std::string before;
    bool isSet = false;
};

#endif
