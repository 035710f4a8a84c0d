#ifndef CLINICALCOMMANDS_H
#define CLINICALCOMMANDS_H

// Tasks of the doctor that ask the clinical model. They print a table; a wrong value of an option gives one
// sentence on standard error. The result is the exit status.

/// --rhythms [AGE]: the rhythms of an age, adult unless given.
int runRhythms();

/// --rhythm ID [--age AGE] --rate N: what the library answers when a rhythm is to run at a heart rate.
int runRhythm();

/// --products: the manikin types with their names and products.
int runProducts();

#endif
