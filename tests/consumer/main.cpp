// The smallest host: uses the installed component's time values.

#include "dv/DVConstants.h"
#include "timecode/BXMCTimecodeUtils.h"

#include <cstdio>

int main() {
    merro::SMPTETime time;
    time.mType = merro::kSMPTETimeType25;
    time.mHours = 1;
    time = merro::BXMCTimecodeUtils::addNbFrameToTimecode(merro::TIMEBASE_625_50, time);
    std::printf("%02d:%02d:%02d:%02d\n", time.mHours, time.mMinutes, time.mSeconds, time.mFrames);
    return time.mSeconds == 1 ? 0 : 1;
}
