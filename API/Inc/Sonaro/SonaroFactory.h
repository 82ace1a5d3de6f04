#pragma once

#include "Sonaro/ISonaroFactory.h"

namespace SN
{

// The one public door to the graph: a process-wide object without state, made at the first call and
// gone with its last reference. Getting it works from any thread.
class SONARO_API SonaroFactory : public Implements<SonaroFactory, ISonaroFactory>
{
public:
	static constexpr Identifier<SonaroFactory> kIdentifier{0xd7ffcb5c40ea305cull, 0x518f4cd3adbbc8aeull};

	static InterfaceRef<SonaroFactory> CreateClassRef();

	// Empty when no instance lives.
	static InterfaceRef<SonaroFactory> CreateClassRefIfSingletonExists();

	static void CreateInstanceRef(InterfaceRef<UnknownBase>& outInstance);

private:
	static InterfaceRef<SonaroFactory> CreateClassRefInternal(bool inCreate);
	static std::shared_ptr<SonaroFactory> AllocateClassInstance();
};

} // namespace SN
