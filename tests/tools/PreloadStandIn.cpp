// Stands for the library that brings the overlay into a program: without it, and without sanitizers.
