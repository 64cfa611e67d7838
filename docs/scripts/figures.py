"""How times are written for people."""


def time_of(nanoseconds):
    """Three digits and a unit: 4.32 ns, 51.0 us, 120 ms."""
    for unit in ("ns", "us", "ms"):
        if nanoseconds < 999.5:
            break
        nanoseconds /= 1000
    else:
        unit = "s"
    return f"{nanoseconds:.{2 if nanoseconds < 9.995 else 1 if nanoseconds < 99.95 else 0}f} {unit}"
