"""Database side of the reference platform from the catalogue (to be written)."""


def files(cat):
    return {}
