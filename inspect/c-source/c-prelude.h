// The parts of a program that are the same for every log, in their order. For the files of this room alone.

#pragma once

namespace orvlog::inspect
{

extern const char* const kCIncludes;
extern const char* const kCRecordTypes;
extern const char* const kCSteps;
extern const char* const kCCallRecords;
extern const char* const kCState;
extern const char* const kCComment;    // one of these two
extern const char* const kCNoComment;  //
extern const char* const kCClient;
extern const char* const kCFonts;
extern const char* const kCImages;
extern const char* const kCTickets;
extern const char* const kCStreams;
extern const char* const kCAskFonts;
extern const char* const kCAskImages;
extern const char* const kCRun;
extern const char* const kCMaking;
extern const char* const kCHost;

}  // namespace orvlog::inspect
