#pragma once

/// Marks what a graphics-API layer may link to; everything else of the library stays hidden.
#define KORDANIX_EXPORT __attribute__((visibility("default")))
