#pragma once

#include <surveymsg/core/detail/MemberTable.h>

namespace surveymsg::detail {

extern const MemberTable kPosnTable;  ///< of `CPosnMsg`; derived classes build on it

}  // namespace surveymsg::detail
