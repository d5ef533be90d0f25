// The --format option that commands share.
#pragma once
#include <CLI/CLI.hpp>
#include <string>
#include <utility>
#include <vector>

#include "base/Format.h"

namespace mkvx {

using FormatNames = std::vector<std::pair<std::string, Format>>;

// Adds --format with exactly these names to the command; the value goes to `chosen`, which holds the default,
// the first of the names, and has to live as long as the command.
inline void addFormatOption(CLI::App& command, Format& chosen, const FormatNames& names) {
    std::vector<std::string> known;
    for (const auto& name : names) known.push_back(name.first);
    auto choose = [&chosen, names](const std::string& text) {
        for (const auto& name : names)
            if (name.first == text) chosen = name.second;
    };
    command.add_option_function<std::string>("--format", choose, "How to print the result")
        ->check(CLI::IsMember(known))
        ->default_str(known.front());
}

}  // namespace mkvx
