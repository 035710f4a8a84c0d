#ifndef LINKCOMMANDS_H
#define LINKCOMMANDS_H

/// --decode [file]: lists the frames of a raw capture of a device stream, from the file or standard input, as
/// they come in, and at the end the totals. Returns the exit status.
int runDecode();

/// --encode <hex>: prints the frame of a message, in hexadecimal. Returns the exit status.
int runEncode();

#endif
