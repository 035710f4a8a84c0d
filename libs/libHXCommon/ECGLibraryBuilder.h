#ifndef ECGLIBRARYBUILDER_H
#define ECGLIBRARYBUILDER_H

class ECGLibrary;

// Makes the rhythm library of each age; the caller owns it. All but the first copy the default library.
namespace ECGLibraryBuilder {
ECGLibrary *buildDefault();
ECGLibrary *buildChild();
ECGLibrary *buildInfant();
ECGLibrary *buildBaby();
} // namespace ECGLibraryBuilder

#endif
