#pragma once

#include <surveymsg/core/detail/MemberTable.h>

namespace surveymsg::detail {

extern const MemberTable kObsTable;  ///< of `CObsMsg`; derived classes build on it

}  // namespace surveymsg::detail
