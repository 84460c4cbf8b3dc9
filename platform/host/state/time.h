// Time: the clock that nobody sets, for whatever lasts, ages or runs out, and the calendar's, for dates.
//
// SQL has the first one, in every statement on a Store:
//   present()    the present moment, a number to be kept in a column
//   age(moment)  the seconds that have passed since then; of NULL, NULL
// so that what was seen keeps present() and is too old WHERE age(seen) >= ?, what lasts keeps present() and
// its duration, and unixepoch() - age(seen) is its date. Within a transaction the present is one moment.
//
// An age is 0 or more and never shrinks while the machine runs. How long a machine was off, nothing tells
// but a clock that people set: a moment of an earlier boot counts as the start of this one. Moments are for
// age() alone: those of different boots have no order, so that lists are sorted by age, the oldest DESC.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>

// What Linux calls the time from one start of the machine to the next. Throws when it does not tell: what was
// of an earlier boot gets dropped, and a guess must not drop it.
std::string boot_id();

// Since the machine started, the time it slept included.
int64_t milliseconds_since_boot();

// Seconds since 1970, as people have set the clock.
uint64_t calendar_seconds();

// Gives the statements on a database present() and age().
void add_time_functions(sqlite3* database);
