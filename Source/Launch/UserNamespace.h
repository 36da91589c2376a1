#pragma once

/// The number by which an ordinary user is known inside of their namespace: root, or their own, which the
/// buses of a desktop ask for.
enum class SeenAs { root, self };

/// Gives an ordinary user the rights of root over what belongs to them: enters a user namespace that maps
/// just this user. Nothing happens for root, and nothing where the system does not allow it; who needs root
/// asks for it afterwards. To be called before the process has a second thread. A program that is executed
/// keeps the rights only where the user is seen as root.
void enterUserNamespaceUnlessRoot(SeenAs number);
