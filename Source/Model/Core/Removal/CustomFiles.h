#pragma once

class CleanupRun;
struct CustomFileRecord;

/// Removes what a record of the user names. A blank path names nothing.
void cleanCustomFile(CleanupRun& run, const CustomFileRecord& record);
