#pragma once

/// Gives an ordinary user root over what belongs to them: enters a user namespace that maps just this user to
/// root. Nothing happens for root, and nothing where the system does not allow it; who needs root asks for it
/// afterwards. To be called before the process has a second thread.
void enterUserNamespaceUnlessRoot();
