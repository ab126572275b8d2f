#pragma once

/// What the process needs of the system before and after everything else.
namespace Platform {

/// First of all: makes sure that the three standard streams are open (a file opened later must not
/// be taken for one of them) and that writing to a closed pipe does not end the program.
void prepareStreams();
/// Sets the allocator up, and has it give memory back before the memory ceiling counts as exceeded.
void prepareAllocator();
/// File names are UTF-8 in the plain "C" locale too. Needs the application object.
void prepareFileNames();
/// The first interrupt stops a run in good order, the second ends the program.
void stopRunOnInterrupt();
/// Ends the process without tearing down the tables cell by cell. Builds with sanitizers check the
/// teardown too: there it does nothing.
void leave(int status);

} // namespace Platform
