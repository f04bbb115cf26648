#include "box/HClusterBoxLocalNode.h"

HClusterBoxLocalNode::HClusterBoxLocalNode() = default;

HString HClusterBoxLocalNode::to_str() const {
  HString text;
  text << L"bod id= " << str_box_id << L"\n"
       << L"box md5= " << str_box_md5 << L"\n"
       << L"class id= " << HString(vt_class_id) << L"\n";
  return text;
}
