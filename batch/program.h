#pragma once

/// The whole of tessimar-batch behind its main(): `version` is the line that --version prints. Returns the exit status.
int RunBatch(int argc, char** argv, const char* version);
