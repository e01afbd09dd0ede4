#pragma once

#include <surveymsg/core/detail/MemberTable.h>

namespace surveymsg::detail {

extern const MemberTable kTransTable;  ///< of `CTransMsg`; derived classes build on it

}  // namespace surveymsg::detail
