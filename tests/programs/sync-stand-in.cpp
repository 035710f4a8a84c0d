// Plays ssh and the programs that jobs run. It keeps its arguments in the file named by $RECORD, each ended
// by a zero byte, and takes the steps that they name; those of one argument are separated by "|". As ssh,
// which the first argument tells, it takes the steps of the remote command.
//
//     out=TEXT, err=TEXT  prints the text, in which "^" and two hexadecimal digits stand for a byte
//     fill=COUNT          prints so many blanks as errors
//     exit=STATUS         ends
//     root                ends with 99 unless it works in the root of a file system
//     stdin               waits for the end of its input
//     deaf                ignores requests to end
//     hang=HOST           if the host is m-1, waits to be ended

#include <QCoreApplication>
#include <QDir>
#include <QTextCodec>
#include <QThread>

#include <csignal>
#include <iostream>

int main(int argc, char **argv)
{
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8")); // in any locale
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    QFile record(qEnvironmentVariable("RECORD"));
    if (!record.fileName().isEmpty() && record.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        record.write((arguments + QStringList{QString()}).join(QChar(0)).toUtf8());

    const bool isSsh = arguments.value(0) == QLatin1String("-o");
    const QStringList steps = arguments.mid(isSsh ? 9 : 0).join(QLatin1Char('|')).split(QLatin1Char('|'));
    for (const QString &step : steps) {
        const QByteArray name = step.trimmed().section(QLatin1Char('='), 0, 0).toUtf8();
        const QByteArray value = step.trimmed().section(QLatin1Char('='), 1).toUtf8();
        if (name == "out" || name == "err")
            (name == "out" ? std::cout : std::cerr)
                << QByteArray::fromPercentEncoding(value, '^').toStdString() << std::flush;
        else if (name == "fill")
            std::cerr << std::string(value.toUInt(), ' ');
        else if (name == "exit")
            return value.toInt();
        else if (name == "root" && !QDir::current().isRoot())
            return 99;
        else if (name == "stdin")
            std::cin.get();
        else if (name == "deaf")
            std::signal(SIGTERM, SIG_IGN);
        else if (name == "hang" && value == "m-1")
            QThread::sleep(600);
    }
    return 0;
}
