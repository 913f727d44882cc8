// Gives the precompiled headers of the standard library a target.
