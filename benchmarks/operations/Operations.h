#pragma once

#include "suite/Suite.h"

/// Each adds the cases of one group of operations.
namespace bench {

void AddMessageCases(Suite& suite);      ///< construct, encode, decode, assign
void AddObservationCases(Suite& suite);  ///< add an observation
void AddMemberCases(Suite& suite);       ///< get a member by number
void AddRecordCases(Suite& suite);       ///< get a member of a format that is known at run time only
void AddTextCases(Suite& suite);         ///< text forms
void AddBusCases(Suite& suite);          ///< send and receive

}  // namespace bench
