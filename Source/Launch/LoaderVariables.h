#pragma once

/// Takes out of the environment what would make the loader, the C library or a shell run code or read data of
/// somebody else's choice in the programs that are started from here: they act on the device with all rights
/// of this process. To be called before the process has a second thread.
void forgetLoaderVariables();
