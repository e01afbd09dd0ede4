#pragma once

#include <surveymsg/observations/ObsMsg.h>
#include <surveymsg/positions/PosnMsg.h>

/// A position that a computation produced, with its quality and copies of the observations it rests on.
///
/// The observations are the message's nested messages, in the order in which they were added, at most one
/// of a type on the same things. Its members 200 to 211 reach into them by index.
class SURVEYMSG_API CCompPosnMsg : public CPosnMsg {
public:
    CCompPosnMsg();
    ~CCompPosnMsg() override;
    void Serialize(CArchive& ar) override;

    using CMsg::operator=;
    CCompPosnMsg& operator=(CCompPosnMsg& source);

    using CMsg::FormatString;
    int GetMemberDefinitions(CPtrArray* rows) override;
    int FormatString(std::uint16_t id, std::uint16_t index, const char* format, CString* out) override;
    int MemberCopy(std::uint16_t id, std::uint16_t index, void* out) override;
    int GetMemberValue(std::uint16_t id, std::uint16_t index, double* out) override;
    int SetMemberValue(std::uint16_t id, std::uint16_t index, double value) override;

    /// Stores a copy; one with the same identifier is overwritten. The given one stays the caller's, its
    /// `Body` is rewritten. 0 if its key is not known to `AllocMsg`. An object that is used again after a
    /// change of its names needs `SetInstanceIdentifier` first.
    int AddObservation(CObsMsg& observation);
    /// Releases the stored observation with the same identifier; 0 if there is none.
    int RemoveObservation(CObsMsg* observation);
    /// The observation at `index`, still owned by this message; null past the last, and for a nested
    /// message that is no observation.
    CObsMsg* GetObservation(std::uint16_t index);

    double StandardDeviation = 0.0;  ///< quality of the solution; infinity (HUGE_VAL) means there is none
};
