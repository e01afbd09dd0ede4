#pragma once

#include <surveymsg/transponders/TransMsg.h>

/// One element of a mobile transponder's list: a transponder and the range to it. It is no message of its
/// own on the bus.
///
/// Only the fields of this class hold the record; the inherited ones neither travel nor serve it. The
/// inherited member operations still read the inherited fields.
class SURVEYMSG_API CTransRange : public CTransMsg {
public:
    CTransRange();
    ~CTransRange() override;
    void Serialize(CArchive& ar) override;

    using CMsg::operator=;
    CTransRange& operator=(CTransRange& source);

    CString RangeName;
    std::int16_t RangeAddress = 0;
    double Range = 0.0;
    double TwoWayMs = 0.0;  ///< two-way travel time in milliseconds
    double SpeedOfSound = 0.0;
    std::int16_t NumberOfHolds = 0;
    double RangeDepth = 0.0;
    double RangePitch = 0.0;
    double RangeRoll = 0.0;
    double RangeTemperature = 0.0;
    double RangeDepthCO = 0.0;        ///< C-O value of `RangeDepth`
    double RangePitchCO = 0.0;        ///< C-O value of `RangePitch`
    double RangeRollCO = 0.0;         ///< C-O value of `RangeRoll`
    double RangeTemperatureCO = 0.0;  ///< C-O value of `RangeTemperature`
    // The rest is copied by assignment and does not travel.
    std::int32_t RangeIRF = 0;
    std::int32_t RangeTurnAround = 0;  ///< a count; shown times 62.5
    InterrogationModes RangeInterrogationMode;
    std::int32_t RangeType = Compatt;  ///< a `TransponderType`
    std::int32_t RangePositioningMethod = 0;
};
