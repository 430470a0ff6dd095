#pragma once

/// Counts the QObjects of the process, whoever made and owns them. For tests that show that nothing is left
/// over.

/// Starts counting; objects made before are not counted.
void startObjectCount();
/// @return objects made since startObjectCount() less those destroyed since
int objectCount();
