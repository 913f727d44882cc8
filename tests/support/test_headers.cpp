// Gives the target of the precompiled headers a source.
