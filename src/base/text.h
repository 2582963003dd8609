#pragma once
// Small text helpers with the semantics the editor's logic is written in:
// whole-text replacement, splitting at a separator that keeps empty pieces,
// and the lenient number conversion that gives 0 for text that is no number.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cvve {

inline constexpr const char* kCrLf = "\r\n";

// Every occurrence of `from` replaced by `to`, scanning left to right without
// rescanning what was inserted. An empty `from` leaves the text as it is.
std::string ReplaceAll(std::string_view text, std::string_view from, std::string_view to);

// Pieces between separators; "a||b" gives three pieces, "" gives one empty piece.
std::vector<std::string> Split(std::string_view text, char separator);

std::string ToLower(std::string_view text);
std::string ToUpper(std::string_view text);
// Full Unicode case folding of UTF-8 text ("MÜLLER", "Müller" and "müller"
// fold alike; "Straße" folds to "strasse"), for comparisons that ignore
// letter case. Bytes that are not UTF-8 fold to U+FFFD.
std::string FoldCase(std::string_view text);
bool EndsWith(std::string_view text, std::string_view suffix);
bool StartsWith(std::string_view text, std::string_view prefix);
bool Contains(std::string_view text, std::string_view part);

// The leading number of the text (blanks skipped, optional sign, digits and
// one decimal point); 0 when the text does not start with a number.
double Val(std::string_view text);

// Val rounded half to even, as the host's whole-number conversion does.
std::int64_t RoundedVal(std::string_view text);

// The whole text as a number, or nothing when it is empty or not entirely a
// number (blanks around it allowed).
std::optional<double> StrictNumber(std::string_view text);

// Decimal text of a whole number.
std::string Str(std::int64_t value);

}  // namespace cvve
