#pragma once

#include <surveymsg/core/Msg.h>

/// Where a named thing is: grid coordinates and depth, attitude, headings, geographic coordinates.
///
/// Its identifier is its name, with a prefix and "/" in front if it has one. After a rename fill the old
/// fields that changed; the next `Send` retires the old identifier.
class SURVEYMSG_API CPosnMsg : public CMsg {
public:
    /// Bits of `Type`.
    enum PositionType : std::uint16_t {
        PositionTypeComputed = 1,  ///< computed; else entered by hand
        PositionTypeOffset = 2,    ///< an offset position
    };

    CPosnMsg();
    ~CPosnMsg() override;
    void Serialize(CArchive& ar) override;

    using CMsg::operator=;
    CPosnMsg& operator=(CPosnMsg& source);

    int GetVersion(CString* out) override;
    int GetInstanceIdentifier(CString* out) override;
    int SetInstanceIdentifier() override;

    using CMsg::FormatString;
    int GetMemberDefinitions(CPtrArray* rows) override;
    int FormatString(std::uint16_t id, std::uint16_t index, const char* format, CString* out) override;
    int MemberCopy(std::uint16_t id, std::uint16_t index, void* out) override;
    int GetMemberValue(std::uint16_t id, std::uint16_t index, double* out) override;
    int SetMemberValue(std::uint16_t id, std::uint16_t index, double value) override;

    /// Sends the position as a raw record of 168 bytes under "PRX~PositionOffset", published with the
    /// format that describes it. `MsgTime` and `Body` stay as they are. The result is the bus's; 0 if the
    /// format cannot be built.
    virtual int SendOrvanePosn();
    /// Takes name, prefix, type, grid coordinates, attitude and headings of `source`; not the old names,
    /// latitude, longitude, or anything of the base or a derived class.
    virtual void Copy(const CPosnMsg& source);

    void GetTypeString(CString* out);  ///< "MANUAL" or "COMPUTED", with "+OFFSET" for an offset position

    // --- geometry; every angle in degrees ----------------------------------------------------------

    void SetGridHdg(double heading);          ///< the true heading follows
    void SetTrueHdg(double heading);          ///< the grid heading follows
    void SetConvergence(double convergence);  ///< the true heading follows, the grid heading stays
    /// Range and bearing (0 along north, clockwise) from the first point to the second. Two points with
    /// one northing have a bearing of exactly 90 or 270, a point to itself 360.
    static void Polar(double fromEast, double fromNorth, double toEast, double toNorth, double* range, double* bearing);
    /// Rotates a body-fixed vector by `Roll`, then `Pitch`, then `GridHeading`, in place.
    void ApplyPRH(double* x, double* y, double* z);
    double DistanceFrom(const CPosnMsg* other);  ///< in space, from east, north and depth

    CString Name;
    CString NamePrefix;        ///< qualifier of the name, or empty
    CString OldName;           ///< `Name` before a rename, or empty
    CString OldNamePrefix;     ///< `NamePrefix` before a rename, or empty
    std::uint16_t Type = 0;    ///< flags by `PositionType`; the others travel along
    double East = 0.0;         ///< grid easting, survey's linear unit
    double North = 0.0;        ///< grid northing, survey's linear unit
    double Depth = 0.0;        ///< survey's linear unit, positive downwards
    double Pitch = 0.0;        ///< degrees
    double Roll = 0.0;         ///< degrees
    double TrueHeading = 0.0;  ///< degrees
    double GridHeading = 0.0;  ///< degrees, true heading plus convergence
    double Convergence = 0.0;  ///< degrees, grid heading minus true heading
    double Latitude = 0.0;     ///< degrees, south negative
    double Longitude = 0.0;    ///< degrees, west negative

protected:
    void TakeFields(const CPosnMsg& source);
};
