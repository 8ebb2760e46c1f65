#pragma once

/// The interface between the counter source, which is part of the library, and the simulated device, which is
/// part of the executable.
extern "C" {

/// A sample of the GPU's counters.
struct KordanixSimulatedGpu {
    double seconds;           ///< time of the sample on the device's clock
    double usage;             ///< percent
    double vertexActivity;    ///< fraction
    double fragmentActivity;  ///< fraction
};

enum KordanixSimulatedMoment {
    KORDANIX_SIMULATED_NOW,      ///< outside a capture
    KORDANIX_SIMULATED_CAPTURE,  ///< a capture begins
    KORDANIX_SIMULATED_SAMPLE    ///< the next sample of the capture
};

/// Fills in a sample; false without a device that has GPU counters. While the device's time is stopped, the
/// samples of a capture are half a millisecond apart, so that their figures do not depend on the machine.
bool kordanixSimulatedGpu(KordanixSimulatedMoment moment, KordanixSimulatedGpu* sample);

}  // extern "C"
