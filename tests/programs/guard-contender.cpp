// Tries to become the running instance of the guard named by its argument, prints "running" or "refused",
// and in the first case runs until its standard input ends.

#include <RunGuard.h>

#include <iostream>
#include <limits>

int main(int, char **argv)
{
    RunGuard guard(QString::fromLocal8Bit(argv[1]));
    if (!guard.tryToRun()) {
        std::cout << "refused" << std::endl;
        return 3;
    }
    std::cout << "running" << std::endl;
    std::cin.ignore(std::numeric_limits<std::streamsize>::max());
    return 0;
}
