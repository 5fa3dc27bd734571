// What the program answers to its caller.

#pragma once

namespace headsetmgmt::program {

enum ExitCode : int {
    exit_done = 0,  ///< everything that was asked for happened
    exit_failed =
        1,  ///< something did not; the last line says what, or standard error if output is lost
    exit_usage = 2,  ///< the command line, or what it names (bench file, folder, address), is wrong
};

}  // namespace headsetmgmt::program
