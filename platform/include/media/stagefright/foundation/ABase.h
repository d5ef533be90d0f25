// Basics of the foundation library.
#pragma once

// Declares, and never defines, a class's copy operations. Goes into the private section.
// NOLINTBEGIN(bugprone-macro-parentheses): the name is a declarator's
#define DISALLOW_EVIL_CONSTRUCTORS(name) \
    name(const name&);                   \
    name& operator=(const name&)
// NOLINTEND(bugprone-macro-parentheses)
