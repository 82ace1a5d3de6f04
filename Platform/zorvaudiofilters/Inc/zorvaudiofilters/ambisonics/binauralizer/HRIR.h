#pragma once

#include "zorvaudiodsp/ambi/ResponseDescriptor.h"
#include "zorvcore/Export.h"

#include <boost/shared_ptr.hpp>

namespace zorvaudiofilters::ambisonics::binauralizer
{

// Head-related impulse responses for dsp::ambi::AmbisonicsBinauralizer::Load. Any thread.
//
// Source    The KEMAR manikin with normal pinnae, measured from 710 directions: W. G. Gardner and K. D. Martin, MIT Media
//           Laboratory, 1994. Scripts/make-hrir-table.py makes the table of them.
// Method    Filters of W, Y, Z and X, fitted at each frequency to all directions by the levels at the ears, the levels
//           between them and, fading out from 600 to 1500 Hz, the times between them. The right ear is the left one mirrored.
// Choice    The error of the levels at the ears, as the root mean square over all directions and the octaves from 150 Hz
//           to 16 kHz, is 3.0 dB. Eight virtual directions at the corners of a cube have 5.3 dB, and the least squares of
//           the complex responses 9.1 dB. The levels between the ears are off by 2.8, 7.0 and 6.6 dB.
// Limits    Those of four components, which no filter overcomes. For third octaves of noise from 26 directions, in the
//           root mean square, levels between the ears are within 0.8 dB up to 800 Hz, 1.6 dB up to 1.6 kHz and 2.6 dB
//           up to 4 kHz. Times between them are within 1.6 samples of 44.1 kHz up to 500 Hz and 4 up to 800 Hz, and
//           those of a head from 1 kHz on are not reproduced.
// Level     Diffuse-field equalised: the mean power over all directions is 1. A wave that comes at 0 reaches the middle
//           of the head 0.6 milliseconds later.
// Rates     44.1, 48, 88.2 and 96 kHz, with 2.7 to 2.9 milliseconds each.
class ZORV_API HRIR
{
public:
	dsp::ambi::ResponseDescriptor const& GetDescriptor() const;
	float const* GetLeftData() const;
	float const* GetRightData() const;
};

// The same object every time.
ZORV_API boost::shared_ptr<HRIR> GetDefaultHRIR();

} // namespace zorvaudiofilters::ambisonics::binauralizer
