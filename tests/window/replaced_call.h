// Replaces a function of the system in a test program. The tested code calls it through a pointer, which the import
// library would define.
#pragma once

#define REPLACE_CALL(function, replacement)                       \
    extern "C" {                                                  \
    extern const decltype(&(function)) __imp_##function;          \
    const decltype(&(function)) __imp_##function = (replacement); \
    }
