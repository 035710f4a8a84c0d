#ifndef TASKS_H
#define TASKS_H

class CommandLine;

// What the doctor can be asked for. Each prints its answer, or one sentence on standard error, and returns
// the exit status. With --json the answer is a JSON document, of --decode and --watch one in each line.

/// Nothing else, or --export FILE: the report; writes it to a new file together with the settings, the
/// service table and the ends of the log files.
int runReport(const CommandLine &line);

/// --check [SERVICE...]: probes the services, all at once, under the path "healthPath" of their "data"; with
/// --selftest those that this process serves on loopback instead.
int runCheck(const CommandLine &line);

/// --rhythms [AGE]: the rhythms of an age.
int runRhythms(const CommandLine &line);

/// --rhythm ID: what the library answers when a rhythm is to run at a heart rate.
int runRhythm(const CommandLine &line);

/// --products: the manikin types with their names and products.
int runProducts(const CommandLine &line);

/// --decode [FILE]: the frames of a capture of a device stream, as they come in, and at the end the totals.
int runDecode(const CommandLine &line);

/// --encode HEX: the frame of a message.
int runEncode(const CommandLine &line);

/// --single-instance: runs until Ctrl+C unless another instance does.
int runSingleInstance(const CommandLine &line);

#endif
