#pragma once

#include <QString>

namespace pondar::bench {

// Saves per second against one PostgreSQL database for 1, 2, 4, ... up to maxTills till
// processes at once (each a run of `program` as a worker), with the ratio to one till.
int runTills(int maxTills, const QString& connection, int milliseconds, const QString& program);
// One till process: Saves on its own cards for the given time, then prints how many.
int runTillWorker(int till, const QString& connection, int milliseconds);

} // namespace pondar::bench
