// Basics of the foundation library.
#pragma once

// Declares, and never defines, a class's copy operations. Goes into the private section.
#define DISALLOW_EVIL_CONSTRUCTORS(name)                                      \
    name(const name&); /* NOLINT(bugprone-macro-parentheses): a declarator */ \
    name& operator=(const name&)
