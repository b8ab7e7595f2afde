#include "xml/ZfBarnXmlRack.h"

void ZfBarnXmlRack::Append(ZfBarnXmlRack& child) {
    child.parent = this;
    child.previous = lastChild;
    (lastChild ? lastChild->next : firstChild) = &child;
    lastChild = &child;
}

void ZfBarnXmlRack::Remove(ZfBarnXmlRack& child) {
    (child.previous ? child.previous->next : firstChild) = child.next;
    (child.next ? child.next->previous : lastChild) = child.previous;
}
