// Makes messages of the arguments that they came with, one overload a kind of message.
#pragma once

#include "hub/Messages.h"
#include "hub/services/Fields.h"

namespace Hub {

/// Each leaves what was wrong in the fields; the message is of no use then.
void Read(CFields& fields, SRegistration& message);
void Read(CFields& fields, SStatus& message);
void Read(CFields& fields, SDataLine& message);
void Read(CFields& fields, SEvent& message);
void Read(CFields& fields, SRawBlock& message);
void Read(CFields& fields, SSolution& message);
void Read(CFields& fields, SSky& message);
void Read(CFields& fields, SBase& message);
void Read(CFields& fields, SReference& message);
void Read(CFields& fields, SSentence& message);
void Read(CFields& fields, SGeoid& message);
void Read(CFields& fields, SActivity& message);
/// The one that is raised; one that is cleared has no value.
void ReadRaised(CFields& fields, SDiagnostic& message);
void ReadCleared(CFields& fields, SDiagnostic& message);

} // namespace Hub
