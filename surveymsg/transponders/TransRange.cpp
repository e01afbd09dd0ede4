#include <surveymsg/transponders/TransRange.h>

#include <surveymsg/core/detail/Assign.h>
#include <surveymsg/core/detail/Share.h>

CTransRange::CTransRange() = default;

CTransRange::~CTransRange() = default;

CTransRange& CTransRange::operator=(CTransRange& source) {
    return surveymsg::detail::AssignMessage(*this, source, Owns(source), [&] {
        TakeFields(source);
        RangeName = source.RangeName;
        RangeAddress = source.RangeAddress;
        Range = source.Range;
        TwoWayMs = source.TwoWayMs;
        SpeedOfSound = source.SpeedOfSound;
        NumberOfHolds = source.NumberOfHolds;
        RangeDepth = source.RangeDepth;
        RangePitch = source.RangePitch;
        RangeRoll = source.RangeRoll;
        RangeTemperature = source.RangeTemperature;
        RangeDepthCO = source.RangeDepthCO;
        RangePitchCO = source.RangePitchCO;
        RangeRollCO = source.RangeRollCO;
        RangeTemperatureCO = source.RangeTemperatureCO;
        RangeIRF = source.RangeIRF;
        RangeTurnAround = source.RangeTurnAround;
        RangeInterrogationMode = source.RangeInterrogationMode;
        RangeType = source.RangeType;
        RangePositioningMethod = source.RangePositioningMethod;
    });
}

// The one class whose share ends with its own fields: the base's do not travel.
void CTransRange::Serialize(CArchive& ar) {
    surveymsg::detail::SerializeShare(ar, {"CTransRange", 1}, [this](auto& wire, int) {
        wire.String(RangeName);
        wire.Word(RangeAddress);
        wire.Doubles(Range, TwoWayMs, SpeedOfSound);
        wire.Word(NumberOfHolds);
        wire.Doubles(RangeDepth, RangePitch, RangeRoll, RangeTemperature, RangeDepthCO, RangePitchCO, RangeRollCO,
                     RangeTemperatureCO);
    });
}
