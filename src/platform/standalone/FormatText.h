// printf into a string, with the conversions that every record publishes done fast.
#pragma once

#include <cstdarg>
#include <string>

/// What vsnprintf gives for the format, of any length.
std::string FormatText(const char* format, va_list arguments) __attribute__((format(printf, 1, 0)));
