// Waits for a line on standard input, tries to become the running instance of the guard named by its
// argument, prints "running" or "refused", and runs until its standard input ends.

#include <RunGuard.h>

#include <iostream>
#include <string>

int main(int, char **argv)
{
    std::string line;
    std::getline(std::cin, line);
    RunGuard guard(QString::fromLocal8Bit(argv[1]));
    if (!guard.tryToRun()) {
        std::cout << "refused" << std::endl;
        return 3;
    }
    std::cout << "running" << std::endl;
    while (std::getline(std::cin, line)) { }
    return 0;
}
