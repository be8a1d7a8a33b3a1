#ifndef QXBACKGROUND_COMMANDLINE_LIMITS_H
#define QXBACKGROUND_COMMANDLINE_LIMITS_H

#include <CLI/CLI.hpp>

#include <cstdint>

namespace workbench {

// For `check` of an option: which numbers it takes.
CLI::Validator AboveZero(); // as a single-precision number, which is what the library takes
CLI::Validator Between(double lowest, double highest);
CLI::Validator BetweenWhole(std::int64_t lowest, std::int64_t highest);

} // namespace workbench

#endif
