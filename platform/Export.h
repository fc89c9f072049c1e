/// @file
/// Symbol visibility for the shared library. Everything is hidden by default
/// (-fvisibility=hidden); QORBGP_EXPORT marks the public interface, which is
/// what `nm -D --defined-only libQorBgpCommunity.so` lists.
#pragma once

#define QORBGP_EXPORT __attribute__((visibility("default")))
