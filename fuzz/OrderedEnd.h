// How the fuzzed program meets the ends of the process that the decoders order for damaged logs.
#pragma once

/// Thrown where the daemon would end: an outcome that is wanted, so no finding. This program links
/// functions of its own in the place of Logs/DamagedLog; every other end stays a finding.
struct SOrderedEnd {};
