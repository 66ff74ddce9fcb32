// Reports of broken internal conditions and of warnings. Both operations keep no state, may be
// called from any thread, never throw and never stop the caller.
#pragma once

#include <cstdint>

#include "interfaces/export.h"

/// Reports a condition that does not hold, as an assertion report located in this module whose text
/// is "EXPRESSION\nFILE, ligne LINE". Narrow texts are taken as UTF-8; bytes that are not become
/// U+FFFD.
/// @param expression the condition as written in the source, a null-terminated narrow string; null
///   counts as empty
/// @param file       path of the caller's source file, as `expression`
/// @param line       line of the check
UTDATA_API void err_Assert(const void* expression, const void* file, std::uint32_t line);

/// Sends a warning with its place to the receiver of reports as a trace, "MESSAGE\nFILE - LINE".
/// The default receiver prints it in checked builds (UTDATA_CHECKED) only.
/// @param message null-terminated; null counts as empty
/// @param file    path of the caller's source file, narrow as in err_Assert
UTDATA_API void err_Warning(const wchar_t* message, const char* file, std::uint32_t line);
