/// @file
/// streamText: the text a printer writes to a std::ostream, without building
/// a std::ostringstream for it.
///
/// @code{.cpp}
///   std::string text = Kiv::streamText([&](std::ostream& os) { os << list; });
/// @endcode
///
/// Constructing a string stream costs more than printing a short text into
/// it (it copies the global locale and allocates its buffer). Each thread
/// keeps one stream and reuses it, its buffer included; a text printed while
/// the thread's stream is busy (a printer that itself asks for a text) gets a
/// stream of its own. Every text starts from a stream in its default state:
/// flags, fill, precision and width a printer changes do not carry over.
#pragma once

#include "QorBgpCommunity/platform/Export.h"

#include <iosfwd>
#include <string>

namespace Kiv {

/// What `print(os, context)` writes. An exception from `print` propagates;
/// the thread's stream is usable again afterwards.
QORBGP_EXPORT std::string streamText(void (*print)(std::ostream&, void const*),
                                     void const* context);

/// What `print(os)` writes (see above).
template <class Print>
std::string streamText(Print const& print) {
   return streamText(
      [](std::ostream& os, void const* p) { (*static_cast<Print const*>(p))(os); }, &print);
}

} // namespace Kiv
