// The transform that ours is measured against: FFTW's, single precision, in place, planned patiently.
#pragma once

#include "support/ocean/complex_grid.h"

#include <fftw3.h>

namespace SUPPORT {

class FFTW_GRID {
public:
    explicit FFTW_GRID(unsigned side)
        : memory(fftwf_alloc_complex(side * side)),
          plan(fftwf_plan_dft_2d(int(side), int(side), memory, memory, FFTW_BACKWARD, FFTW_PATIENT))
    {}
    FFTW_GRID(FFTW_GRID const &) = delete;
    FFTW_GRID &operator=(FFTW_GRID const &) = delete;
    ~FFTW_GRID()
    {
        fftwf_destroy_plan(plan);
        fftwf_free(memory);
    }

    COMPLEX *cells() { return reinterpret_cast<COMPLEX *>(memory); }
    void transform() { fftwf_execute(plan); }

private:
    fftwf_complex *memory;
    fftwf_plan plan;
};

}  // namespace SUPPORT
