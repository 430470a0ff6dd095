#pragma once

/// Opens /dev/null for those of standard input, output and error that are closed, as they are after
/// "vantrel 2>&-": else the next thing that is opened, such as the connection to the display, would get the
/// number, and every warning. Programs that are launched later get all three. To be called before anything is
/// opened.
void fillStandardDescriptors();

/// Keeps for this process what it has been given beside standard input, output and error: programs that are
/// launched later do not get it. What the program opens itself is kept already. To be called next.
void keepInheritedDescriptors();
