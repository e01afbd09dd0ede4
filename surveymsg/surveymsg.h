#pragma once

// The message library of an offshore survey and acoustic positioning suite: everything that a program
// needs. `surveymsg/core/Msg.h` tells how messages are used.

#include <surveymsg/core/Factory.h>
#include <surveymsg/core/MemberDefinition.h>
#include <surveymsg/core/Msg.h>
#include <surveymsg/extension/ExtMsg.h>
#include <surveymsg/observations/AcObsMsg.h>
#include <surveymsg/observations/ObsMsg.h>
#include <surveymsg/positions/CompPosnMsg.h>
#include <surveymsg/positions/PosnListMsg.h>
#include <surveymsg/positions/PosnMsg.h>
#include <surveymsg/positions/TargMsg.h>
#include <surveymsg/records/CopMsg.h>
#include <surveymsg/records/ProfProcessedMsg.h>
#include <surveymsg/transponders/MobTransMsg.h>
#include <surveymsg/transponders/TransMsg.h>
#include <surveymsg/transponders/TransRange.h>
