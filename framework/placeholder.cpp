// Keeps the library linkable until its first source stands.
