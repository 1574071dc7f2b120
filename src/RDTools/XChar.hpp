#pragma once

#include <string>

/// Text conversion at the entries that take wide characters: inside, all text is char, in UTF-8 whatever the locale.

/// Converts nIn characters, terminator included if it is counted, into szOut, which has room for nOut char. Returns the
/// number of char written; nothing is added behind them.
/// Errors: ClExSystem "Conversions Error" (-105) for a character that is none, a szOut too short (what fits is written)
/// or a null pointer with a count above 0.
unsigned long ConvertWideCharToSBCS(const wchar_t* szIn, unsigned long nIn, char* szOut, unsigned long nOut);

/// The reverse: nIn char of UTF-8 into room for nOut wide characters; returns the number of wide characters. Errors as
/// above; a sequence that is cut off counts as a character that is none.
unsigned long ConvertSBCSToWidechar(const char* szIn, unsigned long nIn, wchar_t* szOut, unsigned long nOut);

/// A whole terminated text, not null. Errors: ClExSystem "Conversions Error" (-105), ClExBadAlloc (-102).
std::string SBCSFromWideChar(const wchar_t* szIn);
std::wstring WideCharFromSBCS(const char* szIn);
