"""What one channel of the lamp shows for a text in its "pattern" attribute, by the rules of the
kernel's trigger, and the colour that the mean light of a moment has on a screen."""

import bisect

FADE = 50
HZ = 250
FLOOR = 48


def wait(milliseconds):
    """A timer of the kernel waits whole ticks, and one more."""
    return (-(-milliseconds * HZ // 1000) + 1) * 1000 / HZ


def once_through(text):
    """[(duration, level)] of a pattern that begins again where it has ended."""
    numbers = [int(each) for each in text.split()]
    steps = list(zip(numbers[::2], numbers[1::2]))
    shown, place = [], 0
    while not shown or place != 0:
        (level, duration), (following, skipped) = steps[place], steps[(place + 1) % len(steps)]
        if level == following:
            shown.append((wait(duration), level))
            place += 2 if skipped == 0 else 1
        else:
            for time in range(0, duration + 1, FADE):
                change = (following - level) * time
                faded = abs(change) // duration * (1 if change > 0 else -1) if duration >= FADE else 0
                shown.append((wait(FADE), level + faded))
            place += 1
        place %= len(steps)
    return shown


class ChannelLight:
    """The light of one channel with its range, from the moment on at which it was written."""

    def __init__(self, pattern, minimum, maximum):
        self._begins, self._light = [0.0], [0.0]
        for duration, level in once_through(pattern) if pattern else [(1000, 0)]:
            shown = minimum + level * (maximum - minimum) // 1000
            self._begins.append(self._begins[-1] + duration)
            self._light.append(self._light[-1] + duration * shown)
        self.period = self._begins[-1]

    def _until(self, time):
        rounds, rest = divmod(time, self.period)
        place = bisect.bisect_right(self._begins, rest) - 1
        begin, end = self._begins[place:place + 2]
        share = (rest - begin) / (end - begin)
        return (rounds * self._light[-1] + self._light[place]
                + share * (self._light[place + 1] - self._light[place]))

    def mean(self, begin, end):
        return (self._until(end) - self._until(begin)) / (end - begin)


def screen(level):
    """0..255 for linear light of 0..1000; the least light can be seen."""
    linear = min(level, 1000) / 1000
    if linear <= 0:
        return 0
    encoded = 12.92 * linear if linear <= 0.0031308 else 1.055 * linear ** (1 / 2.4) - 0.055
    return FLOOR + (255 - FLOOR) * encoded
