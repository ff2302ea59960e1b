// The precompiled headers need one source to belong to.
