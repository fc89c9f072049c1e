/// @file
/// The bandwidth of a link as the routing information base holds it: the
/// IEEE-754 single-precision number of the link-bandwidth extended community,
/// in bytes per second (RFC 4360 family, the "link bandwidth" value that
/// unequal-cost multipath divides traffic by).
///
/// A LinkBandwidth is a small value: trivially copyable, passed by value,
/// immutable. It accepts any float, including NaN, infinities and negative
/// numbers, since it is decoded from the wire; isValid() says whether the value
/// means anything, and the texts render invalid values as "invalid".
///
/// @code{.cpp}
///   Rib::LinkBandwidth bw(1.25e9f);     // 10 Gbit/s, in bytes per second
///   bw.toStrep();                       // "10Gbps"
///   bw.toStrepWeighted();               // "1250000000"
/// @endcode
#pragma once

#include "QorBgpCommunity/platform/Export.h"

#include <string>

namespace Rib {

/// A link's bandwidth in bytes per second, as the link-bandwidth extended community carries
/// it.
class QORBGP_EXPORT LinkBandwidth {
 public:
   constexpr LinkBandwidth() noexcept = default;
   constexpr explicit LinkBandwidth(float bytesPerSecond) noexcept
       : bytesPerSecond_(bytesPerSecond) {}

   constexpr float bytesPerSecond() const noexcept { return bytesPerSecond_; }

   /// Finite and not negative (so -0 is valid and equals 0). NaN, the
   /// infinities and every negative number are invalid.
   bool isValid() const noexcept;

   /// The rate as an operator reads it off an interface: bits per second (the
   /// stored bytes times 8) scaled to the largest of bps, Kbps, Mbps, Gbps and
   /// Tbps that keeps the number at 1 or more, with at most two decimals and no
   /// trailing zeros: "10Gbps", "1.5Mbps", "0.8bps", "0bps". Units step by
   /// 1000, as link speeds do. A value that rounds up to 1000 of a unit moves to
   /// the next unit ("1Mbps", not "1000Kbps"); above 999.99 Tbps the number just
   /// grows. A positive value below 0.005 bit/s shows as "0bps".
   /// "invalid" when !isValid().
   std::string toStrep() const;

   /// The value used as a weight in unequal-cost multipath, where only the
   /// ratio between paths matters: the stored number itself, unscaled and
   /// without a unit (a weight is not a rate, and converting it would only
   /// hide the number that policy set), in the fewest digits that read back as
   /// the same float, written out without an exponent: 1.25e9 gives
   /// "1250000000", 0.1 gives "0.1", 1.25e14 gives "125000000000000" (not the
   /// float's exact 124999998373888).
   /// "invalid" when !isValid().
   std::string toStrepWeighted() const;

   /// toStrepWeighted() when `weighted`, else toStrep().
   std::string toStrep(bool weighted) const { return weighted ? toStrepWeighted() : toStrep(); }

 private:
   float bytesPerSecond_ = 0;
};

} // namespace Rib
