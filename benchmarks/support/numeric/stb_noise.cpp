// The one source that holds the body of stb_perlin, as its users have it.
#define STB_PERLIN_IMPLEMENTATION
#include <stb/stb_perlin.h>
