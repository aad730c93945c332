// The base of everything that looks at decoded records.
#pragma once

class CGPSRecord;

/// An observer is offered every record in arrival order, synchronously, and picks out by dynamic
/// type what it cares about. It must neither keep the pointer nor delete the record.
class CLogObserver {
public:
    virtual ~CLogObserver() = default;
    virtual void NewRecord(CGPSRecord* record) = 0;
};
