#include "QorBgpCommunity/platform/LinkBandwidth.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>

namespace Rib {

namespace {

constexpr char const* invalidText = "invalid";
constexpr double bitsPerByte = 8;
constexpr double unitStep = 1000;
constexpr std::string_view rateUnits[] = {"bps", "Kbps", "Mbps", "Gbps", "Tbps"};
constexpr std::size_t unitCount = std::size(rateUnits);
constexpr int decimals = 2;
// Fixed notation with two decimals of the largest float, in bits per second
// and Tbps, is 31 characters; scientific notation of any float is at most 15.
constexpr std::size_t numberTextCapacity = 64;

// A number in fixed notation with at most `decimals` decimals: "10", "1.5".
// Writes into `text` (numberTextCapacity bytes) and returns the used length.
std::size_t formatNumber(char* text, double value) {
   if (value == 0) {
      value = 0; // -0 would print as "-0"
   }
   auto [end, ec] =
      std::to_chars(text, text + numberTextCapacity, value, std::chars_format::fixed, decimals);
   (void)ec; // every finite double fits: see numberTextCapacity
   std::string_view number(text, static_cast<std::size_t>(end - text));
   if (number.find('.') != std::string_view::npos) {
      number.remove_suffix(number.size() - number.find_last_not_of('0') - 1);
      if (number.back() == '.') {
         number.remove_suffix(1);
      }
   }
   return number.size();
}

// The shortest digits that read back as `value` (finite, not negative),
// written out without an exponent: 1.25e14f gives "125000000000000" where
// the float's exact value is 124999998373888; 0.1f gives "0.1".
std::string shortestPlainNotation(float value) {
   char text[numberTextCapacity];
   auto [end, ec] =
      std::to_chars(text, text + sizeof text, value, std::chars_format::scientific);
   (void)ec; // always fits: see numberTextCapacity
   // "d[.ddd]e+XX" or "d[.ddd]e-XX"
   std::string_view scientific(text, static_cast<std::size_t>(end - text));
   std::size_t e = scientific.find('e');
   std::string digits(1, scientific[0]);
   if (e > 1) {
      digits.append(scientific.substr(2, e - 2));
   }
   int exponent = 0;
   std::from_chars(scientific.data() + e + 2, end, exponent);
   int integerDigits = scientific[e + 1] == '-' ? 1 - exponent : 1 + exponent;
   if (integerDigits <= 0) {
      return "0." + std::string(static_cast<std::size_t>(-integerDigits), '0') + digits;
   }
   auto point = static_cast<std::size_t>(integerDigits);
   if (point >= digits.size()) {
      return digits + std::string(point - digits.size(), '0');
   }
   return digits.substr(0, point) + '.' + digits.substr(point);
}

} // namespace

bool LinkBandwidth::isValid() const noexcept {
   return std::isfinite(bytesPerSecond_) && bytesPerSecond_ >= 0;
}

std::string LinkBandwidth::toStrep() const {
   if (!isValid()) {
      return invalidText;
   }
   double scaled = static_cast<double>(bytesPerSecond_) * bitsPerByte;
   std::size_t unit = 0;
   while (unit + 1 < unitCount && scaled >= unitStep) {
      scaled /= unitStep;
      ++unit;
   }
   char text[numberTextCapacity];
   std::size_t length = formatNumber(text, scaled);
   // 999.996 rounds to "1000": show it as 1 of the next unit instead.
   if (unit + 1 < unitCount && std::string_view(text, length) == "1000") {
      length = formatNumber(text, 1);
      ++unit;
   }
   std::string result(text, length);
   result += rateUnits[unit];
   return result;
}

std::string LinkBandwidth::toStrepWeighted() const {
   if (!isValid()) {
      return invalidText;
   }
   // No rounding can merge two distinct weights, and no digits beyond the
   // float's precision show.
   return shortestPlainNotation(bytesPerSecond_ == 0 ? 0.0f : bytesPerSecond_); // no "-0"
}

} // namespace Rib
