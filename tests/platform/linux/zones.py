"""Prints, for every zone of the system, the bias at the ends of each year from 2010 to 2030 and on both sides of every
transition in them: one line "zone seconds bias" each, in UTC seconds since 1970 and minutes, earliest first."""
import datetime
import os
import zoneinfo

UTC = datetime.timezone.utc
FIRST = int(datetime.datetime(2010, 1, 1, tzinfo=UTC).timestamp())
LAST = int(datetime.datetime(2031, 1, 1, tzinfo=UTC).timestamp())
YEARS = [int(datetime.datetime(y, 1, 1, tzinfo=UTC).timestamp()) for y in range(2010, 2031)]
STEP = 4 * 86400


def offset(zone, seconds):
    return datetime.datetime.fromtimestamp(seconds, zone).utcoffset()


seen = set()
for name in sorted(zoneinfo.available_timezones()):
    path = next((p for f in zoneinfo.TZPATH if os.path.isfile(p := os.path.join(f, name))), None)
    content = path and open(path, "rb").read()
    if not content or content in seen:
        continue
    seen.add(content)
    zone = zoneinfo.ZoneInfo(name)
    samples = {s for y in YEARS for s in (y - 1, y)} - {FIRST - 1}
    for begin in range(FIRST, LAST - STEP, STEP):
        end = begin + STEP
        if offset(zone, begin) != (after := offset(zone, end)):
            while end - begin > 1:
                middle = (begin + end) // 2
                begin, end = (begin, middle) if offset(zone, middle) == after else (middle, end)
            samples |= {end - 1, end}
    for seconds in sorted(samples):
        print(name, seconds, -int(offset(zone, seconds).total_seconds()) // 60)
