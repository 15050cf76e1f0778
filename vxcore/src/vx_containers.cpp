// The library's exported instantiations of the container templates for the element types
// it defines itself. Other element types are instantiated by the sources that bring them.
#include "vx_array.h"
#include "vx_str.h"

template class VX_Container<unsigned int>;
template class VX_OrdContainer<unsigned int>;
template class VX_I_Iterator<unsigned int>;
template class VX_IndContainer<unsigned int>;
template class VX_Array<unsigned int>;

template class VX_Container<VX_String>;
template class VX_OrdContainer<VX_String>;
template class VX_I_Iterator<VX_String>;
template class VX_IndContainer<VX_String>;
template class VX_Array<VX_String>;
