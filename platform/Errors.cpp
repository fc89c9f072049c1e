#include "QorBgpCommunity/platform/Errors.h"

namespace Kiv {

// Out-of-line destructors anchor each class's type information in the library,
// so that a catch in another module matches the type thrown here.
Error::~Error() = default;
RangeError::~RangeError() = default;
NullArgumentError::~NullArgumentError() = default;
NotDeletableError::~NotDeletableError() = default;

} // namespace Kiv
