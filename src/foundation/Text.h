#pragma once

#include <complex>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qvre {

/// Numbers to text: general notation with 6 significant digits, as short as "%g" makes it.
std::string IntToText(std::int64_t value);
std::string FloatToText(float value);
std::string DoubleToText(double value);

/// Decimals with which a value and its error are told: two digits of the error where it begins with 1,
/// otherwise one. 0 for an error that is none.
int DecimalsOfError(double error);

/// "1.772 +- 0.008"
std::string WithError(double value, double error);

/// Text to numbers: leading blanks are skipped, the decimal number that follows is taken, the rest is
/// ignored. A text that begins with no number, one out of the type's range, and one with an "e" behind it
/// that no exponent follows ("12.5eV") read as 0; no failure is reported.
std::int32_t TextToInt(std::string_view text);
std::uint32_t TextToUnsigned(std::string_view text);
float TextToFloat(std::string_view text);
double TextToDouble(std::string_view text);

/// Element of a stored matrix, as a "%Lg" scan reads it: like TextToDouble, but "inf" and "nan" are numbers
/// and a broken exponent is left out.
double ScanDouble(std::string_view text);

/// Splits a key with a value in it, such as "12.5eV". False, value 0 and an empty rest if there is no number.
/// `value` is read from the first character of a number on; `rest` is what stands behind the last digit or
/// dot.
bool NumberSplit(std::string_view text, double& value, std::string& rest);

/// Splits a line at runs of tab, line feed, carriage return, blank and comma.
std::vector<std::string> TokenSplit(std::string_view line);

/// Splits a text at runs of line feed and carriage return: blank lines vanish.
std::vector<std::string> LineSplit(std::string_view text);

}  // namespace qvre

/// (-i)^n for any integer n: the factor of the far field of an outgoing partial wave.
std::complex<double> IPower(int n);
