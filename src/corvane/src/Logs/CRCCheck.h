// Whether a binary record has to check its CRC itself: asked of every record's constructor.
#pragma once

/// A framer passes on only sentences whose CRC it has checked; computing it again for the record's
/// valid flag would cost more than all the decoding.
enum class ECRCCheck {
    compute,      ///< the valid flag is the outcome of a check made now
    alreadyPassed ///< the caller has checked this sentence: the valid flag is true
};
