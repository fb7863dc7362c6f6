"""The voice activity detector once more, written step by step in plain Python floats."""

DEFAULT_WEIGHT = [0.999, 0.98675, 0.9745, 0.96225, 0.95]


def floor_of_level(level):
    """The energy of a level in whole decades: -35.5 gives 0.001, -9 gives 1."""
    decades = -int(-int(level) // 10)
    power = 1.0
    for _ in range(abs(decades)):
        power *= 10.0
    return 1.0 / power


def decisions(energies, level, sensitivity):
    """1 for voice and 0 for silence, for each frame's mean energy in turn."""
    floor = floor_of_level(level)
    first = True
    factor = 1.0
    minimum = previous_minimum = floor
    maximum = None
    result = []
    for energy in energies:
        if first:
            maximum = energy
            minimum = previous_minimum = floor
        if energy > 0:
            if energy > maximum:
                maximum = energy
                factor = 1.0
            else:
                maximum *= 0.996
                if minimum > energy:
                    factor = 1.0
                    minimum = energy
                else:
                    factor = 1.0001
            if minimum > maximum:
                minimum = floor
        else:
            minimum = floor
            factor = 1.0
        if maximum == 0.0:
            weight = DEFAULT_WEIGHT[sensitivity]
        else:
            weight = (maximum - minimum) / maximum
        if weight > 0.999 or weight < 0.95:
            weight = DEFAULT_WEIGHT[sensitivity]
        threshold = (1.0 - weight) * maximum + weight * minimum
        result.append(1 if energy > threshold else 0)
        minimum, previous_minimum = previous_minimum * factor, minimum
        first = False
    return result
