#pragma once

/// For the beginning of a program. Standard input, output and error are opened on nothing where the
/// caller has closed them, so that no file of the program's own is taken for one of them; and a
/// limit to the size of files makes a write fail, which otherwise ends the process.
void prepare_process();
