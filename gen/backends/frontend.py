"""Front-end code from the catalogue (to be written)."""


def files(cat):
    return {}
