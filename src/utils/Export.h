#pragma once

/// Marks what a graphics-API layer may link to; everything else in the library is hidden.
#define KORDANIX_EXPORT __attribute__((visibility("default")))
