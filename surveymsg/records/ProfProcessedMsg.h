#pragma once

#include <surveymsg/positions/PosnMsg.h>

/// The result of processing one seabed profile across a pipe, at a position. The class carries the figures,
/// in the survey's own units, and computes none of them.
class SURVEYMSG_API CProfProcessedMsg : public CPosnMsg {
public:
    /// Values of `PipePositionStatus`.
    enum PipePosition : std::int16_t { Manual = 0, PipeTracker = 1, Automatic = 2 };

    CProfProcessedMsg();
    ~CProfProcessedMsg() override;
    void Serialize(CArchive& ar) override;

    using CMsg::operator=;
    CProfProcessedMsg& operator=(CProfProcessedMsg& source);

    int GetVersion(CString* out) override;

    using CMsg::FormatString;
    int GetMemberDefinitions(CPtrArray* rows) override;
    int FormatString(std::uint16_t id, std::uint16_t index, const char* format, CString* out) override;
    int MemberCopy(std::uint16_t id, std::uint16_t index, void* out) override;
    int GetMemberValue(std::uint16_t id, std::uint16_t index, double* out) override;
    int SetMemberValue(std::uint16_t id, std::uint16_t index, double value) override;

    // the seabed found to port and to starboard
    double PortSeabedX = 0.0;
    double PortSeabedY = 0.0;
    double StarboardSeabedX = 0.0;
    double StarboardSeabedY = 0.0;
    double MeanSeabedLevel = 0.0;

    // the adjacent points
    double PortAdjacentX = 0.0;
    double PortAdjacentY = 0.0;
    double StarboardAdjacentX = 0.0;
    double StarboardAdjacentY = 0.0;
    double MeanAdjacentLevel = 0.0;

    // top and bottom of the trench
    double PortTopX = 0.0;
    double PortTopY = 0.0;
    double StarboardTopX = 0.0;
    double StarboardTopY = 0.0;
    double PortBottomX = 0.0;
    double PortBottomY = 0.0;
    double StarboardBottomX = 0.0;
    double StarboardBottomY = 0.0;
    double BottomX = 0.0;
    double BottomY = 0.0;
    double PortTrenchWidth = 0.0;
    double StarboardTrenchWidth = 0.0;

    // the pipe
    double PipeCentreX = 0.0;
    double PipeCentreY = 0.0;
    double TopOfPipeLevel = 0.0;
    double PipeDiameter = 0.0;
    std::int16_t PipePositionStatus = 0;  ///< how the position was obtained, a `PipePosition`

    // burial and cover
    int PipeBuriedStatus = 0;  ///< 0 exposed, any other value buried
    double DepthOfBurial = 0.0;
    double MinimumCover = 0.0;
    double MinimumCoverX = 0.0;
    double MinimumCoverY = 0.0;
};
