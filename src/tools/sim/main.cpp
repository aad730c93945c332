// corvane-sim: behaves like a GNSS receiver, for those who have none at hand.

#include "sim/CaptureWriter.h"
#include "sim/CommandFile.h"
#include "sim/Options.h"
#include "sim/Simulation.h"

#include <cstdio>

int main(int argc, char* argv[]) {
    using namespace Sim;
    int status = 0;
    const std::optional<SOptions> options = ParseOptions(argc, argv, status);
    if (!options) {
        return status;
    }
    const bool isCapture = !options->captureFile.empty();
    std::vector<std::string> commands;
    if (options->commandsFile) {
        const auto read = ReadCommands(*options->commandsFile);
        if (!read) {
            std::fprintf(stderr, "corvane-sim: %s: cannot be read\n",
                         options->commandsFile->c_str());
            return 1;
        }
        commands = *read;
    } else if (isCapture) {
        commands = UsualCommands();
    }
    return isCapture ? WriteCapture(*options, commands) : CSimulation(*options).Run(commands);
}
