/// @file
/// Forward declarations of the snapshot store types that the interface of the
/// values and lists names (their hoard and dehoard members). Code that
/// publishes or restores includes platform/Hoard.h.
#pragma once

namespace hoard {
class Location;
class StoreWriter;
class StoreManager;
} // namespace hoard
