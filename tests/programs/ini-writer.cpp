// Called with a file and two keys. For each line on standard input it prints the value of the second key and
// then gives the first one the line as its value.

#include <InitProperties.h>

#include <iostream>
#include <string>

int main(int, char **argv)
{
    const QString path = QString::fromLocal8Bit(argv[1]);
    const QString ownKey = QString::fromLocal8Bit(argv[2]);
    const QString otherKey = QString::fromLocal8Bit(argv[3]);
    for (std::string line; std::getline(std::cin, line);) {
        const QString seen = InitProperties::readSettingsLine(path, otherKey, QString());
        InitProperties::writeSettingsLine(path, ownKey, QString::fromStdString(line));
        std::cout << seen.toStdString() << std::endl;
    }
    return 0;
}
