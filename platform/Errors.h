/// @file
/// The framework's error types for bad values handed in by callers. Each carries
/// its message exactly as given; what() returns it unchanged.
///
/// @code{.unparsed}
///   RangeError          a value outside what the receiver accepts
///                       ("value < min or > max not allowed")
///   NullArgumentError   a required pointer argument was null
///   NotDeletableError   an attribute that may not be deleted was asked to be
/// @endcode
///
/// Data from the wire never raises these: decoders report malformed input in
/// their results instead.
#pragma once

#include "QorBgpCommunity/platform/Export.h"

#include <stdexcept>
#include <string>

namespace Kiv {

/// Base of the framework's errors for bad values handed in by callers.
class QORBGP_EXPORT Error : public std::runtime_error {
 public:
   using std::runtime_error::runtime_error;
   ~Error() override;
};

/// A value or text outside what the operation accepts.
class QORBGP_EXPORT RangeError : public Error {
 public:
   using Error::Error;
   ~RangeError() override;
};

/// A null pointer where an object is required.
class QORBGP_EXPORT NullArgumentError : public Error {
 public:
   using Error::Error;
   ~NullArgumentError() override;
};

/// A removal of something that cannot be removed.
class QORBGP_EXPORT NotDeletableError : public Error {
 public:
   using Error::Error;
   ~NotDeletableError() override;
};

} // namespace Kiv
