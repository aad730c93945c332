// Turns a framed sentence into a record; the port handler calls CreateRecord for each.
#pragma once

#include "Bytes/ByteReaders.h"
#include "Logs/CRCCheck.h"
#include "Logs/GPSRecord.h"

#include <memory>

/// The record's class says what the sentence is; null means that the sentence is no record. A log
/// whose length contradicts its contents may end the process (Logs/DamagedLog.h); nothing else of
/// a sentence's contents is an error. With ECRCCheck::alreadyPassed, for sentences of the binary
/// framer, the CRC is not computed again.
std::unique_ptr<CGPSRecord> CreateRecord(const Bytes::Sentence& sentence,
                                         ECRCCheck check = ECRCCheck::compute);

/// As CreateRecord, for a sentence that is not NMEA.
std::unique_ptr<CGPSRecord> CreateNovatelRecord(const Bytes::Sentence& sentence,
                                                ECRCCheck check = ECRCCheck::compute);
std::unique_ptr<CGPSRecord> CreateBinaryRecord(const Bytes::Sentence& sentence,
                                               ECRCCheck check = ECRCCheck::compute);
/// A record for the log SOFTLOADSTATUSA only.
std::unique_ptr<CGPSRecord> CreateASCIIRecord(const Bytes::Sentence& sentence);
