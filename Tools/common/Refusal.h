/// @file
/// What is wrong with a command line, for people.
#pragma once

#include <CLI/App.hpp>

#include <string>

namespace commandline {

/// @param app   the program, which has refused its command line
/// @param error why
/// @return what is wrong, in which command, and what is allowed there or where that is told
std::string Refusal(const CLI::App& app, const CLI::ParseError& error);

}  // namespace commandline
