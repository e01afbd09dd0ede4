#pragma once

#include <surveymsg/platform/Export.h>

class CArchive;

/// Root of everything that a map can own and an archive can carry.
class SURVEYMSG_API CObject {
public:
    virtual ~CObject();

    /// Stores the object to `ar` or loads it from there, as the archive says. The root has nothing to
    /// store.
    virtual void Serialize(CArchive& ar);

protected:
    CObject() = default;
    CObject(const CObject&) = default;
    CObject& operator=(const CObject&) = default;
};
