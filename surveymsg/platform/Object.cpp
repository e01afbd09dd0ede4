#include <surveymsg/platform/Object.h>

CObject::~CObject() = default;

void CObject::Serialize(CArchive& /*ar*/) {}
