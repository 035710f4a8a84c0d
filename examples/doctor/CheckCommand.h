#ifndef CHECKCOMMAND_H
#define CHECKCOMMAND_H

/// --environment NAME, --region NAME: puts another deployment in force for this run; the settings stay.
void chooseDeployment();

/**
 * --check [TARGET...] [--selftest]: probes all services, or those named, at once.
 *
 * Probed is the path under "healthPath" in the service's "data", or else its base address. Prints one line
 * per service; the words of an error are those of the reply, which passes through the access manager before
 * the checker judges it. With --selftest every service is served by this process on the loopback interface.
 * @return 0, 1 if a service failed, 2 for an unknown service
 */
int runCheck();

#endif
