#pragma once

// What a tool's process inherits besides its standard streams.

inline constexpr int rootDescriptor = 3;
inline constexpr int currentDirectoryDescriptor = 4;
/// In the current directory's place, for a program that stays in the host's world; missing where the tree has
/// no package database.
inline constexpr int packageDatabaseDescriptor = 4;
inline constexpr int firstFreeDescriptor = 5;

/// The status of a process that ends before the tool has begun.
inline constexpr int notEnteredStatus = 126;
