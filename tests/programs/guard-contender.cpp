// Makes the guard named by its argument, prints "made", waits for a line on standard input, tries to become
// the running instance, prints "running" or "refused", and runs until its standard input ends.

#include <RunGuard.h>

#include <iostream>
#include <string>

int main(int, char **argv)
{
    RunGuard guard(QString::fromLocal8Bit(argv[1]));
    std::cout << "made" << std::endl;
    std::string line;
    std::getline(std::cin, line);
    std::cout << (guard.tryToRun() ? "running" : "refused") << std::endl;
    while (std::getline(std::cin, line)) { }
    return 0;
}
