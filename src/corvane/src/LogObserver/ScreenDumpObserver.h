// Prints a line for every record of the receiver to standard output, for the option -d.
#pragma once

#include "LogObserver/LogObserver.h"

class CScreenDumpObserver : public CLogObserver {
public:
    void NewRecord(CGPSRecord* record) override;
};
