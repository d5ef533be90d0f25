// The --format option that commands share.
#pragma once
#include <CLI/CLI.hpp>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Render.h"

namespace mkvx {

using FormatNames = std::vector<std::pair<std::string, Format>>;

// Adds --format with exactly these names to the command; the value goes to `chosen`, which holds the default.
inline void addFormatOption(CLI::App& command, Format& chosen, const FormatNames& names) {
    std::string list;
    for (const auto& name : names) list += (list.empty() ? "" : "|") + name.first;
    command.add_option("--format", chosen, "How to print the result: " + list)
        ->transform(CLI::Transformer(names))
        ->type_name("NAME");
}

}  // namespace mkvx
