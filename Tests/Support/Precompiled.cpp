// The source that the precompiled headers of the tests belong to. There is nothing in it.
