// The shared library has no code of its own: it is the platform's rooms linked whole.
