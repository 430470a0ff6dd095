#pragma once

/// Keeps for this process what it has been given beside standard input, output and error: programs that are
/// launched later do not get it. What the program opens itself is kept already. To be called first of all.
void keepInheritedDescriptors();
