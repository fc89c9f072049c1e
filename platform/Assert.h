// Fatal assertions for broken internal invariants. They are on in every build
// type: a failed one prints the violated condition exactly as written, with the
// source unit (file name without directory or extension) and line, to standard
// error and aborts the process. Bad input from callers or from the wire is
// never asserted on; it is an error result or an exception instead.
#pragma once

#include "platform/Export.h"

#include <string_view>

namespace Kiv {

// The source unit of a file path: its name without directory or extension
// ("a/b/QorBgpSerialize.cpp" -> "QorBgpSerialize"). Points into `file`.
QORBGP_EXPORT std::string_view sourceUnit(std::string_view file) noexcept;

// Prints "<unit>:<line>: assertion failed: <condition>" and aborts.
// Safe to call from any thread; never returns.
[[noreturn]] QORBGP_EXPORT void assertionFailed(char const* condition, char const* file,
                                                int line) noexcept;

} // namespace Kiv

// QOR_ASSERT(cond): the condition's source text is the message.
#define QOR_ASSERT(cond) QOR_ASSERT_TEXT(cond, #cond)

// QOR_ASSERT_TEXT(cond, text): for conditions whose fixed message differs from
// the expression that checks it.
#define QOR_ASSERT_TEXT(cond, text)                                                      \
   do {                                                                                  \
      if (!(cond)) [[unlikely]]                                                          \
         ::Kiv::assertionFailed(text, __FILE__, __LINE__);                               \
   } while (0)
