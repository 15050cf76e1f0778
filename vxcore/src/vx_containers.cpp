// The library's exported instantiations of the container templates for the element types
// it defines itself. Other element types are instantiated by the sources that bring them.
#include "vx_array.h"
#include "vx_list.h"
#include "vx_queue.h"
#include "vx_stack.h"
#include "vx_vcarray.h"
#include "vx_str.h"

VX_CONTAINER_INTERFACE_INSTANCES(, unsigned int)
template class VX_Array<unsigned int>;
template class VX_LNode<unsigned int>;
template class VX_LList<unsigned int>;

VX_CONTAINER_INTERFACE_INSTANCES(, VX_String)
template class VX_Array<VX_String>;
template class VX_LNode<VX_String>;
template class VX_LList<VX_String>;

template struct VX_VCARR_LLIST_REC<unsigned int>;
VX_CONTAINER_INTERFACE_INSTANCES(, VX_VCARR_LLIST_REC<unsigned int>)
template class VX_LNode<VX_VCARR_LLIST_REC<unsigned int>>;
template class VX_LList<VX_VCARR_LLIST_REC<unsigned int>>;
template class VX_VCArray<unsigned int>;
template class VX_AdapterStore<unsigned int>;
template class VX_Stack<unsigned int>;
template class VX_Queue<unsigned int>;
