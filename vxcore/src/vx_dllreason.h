// The system's reason for the last failed module load or entry-point lookup, shared by the
// module manager and the public-module layer (internal to the library).
#ifndef VX_DLLREASON_H
#define VX_DLLREASON_H

// Takes the system's reason for the failure that just happened (or `fallback` when the system
// gave none) as the text VX_dllGetLastError answers, and returns that text.
const char* VX_dllNoteFailure(const char* fallback);

#endif
