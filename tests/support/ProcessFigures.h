#pragma once

/// Figures of the running process, read from /proc/self. For tests that show that nothing is left over.

/// @return number of threads
int threadCount();
/// @return number of threads that wait in a pool for work, or do some: they come and go as the pool likes,
/// each with
///         a descriptor and two objects of its own
int pooledThreadCount();
/// @return number of open descriptors
int descriptorCount();
/// @return whether every thread but the calling one waits for something
bool otherThreadsWait();
/// @return children of the process, zombies included
int childCount();
/// @return resident memory in KiB
long residentKib();
