<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>VKTCfgTools</name>
    <message>
        <source>SPI_F</source>
        <translation>SPI 帧由字节数和时间两个参数划分。</translation>
    </message>
</context>
<context>
    <name>QWidgetTextControl</name>
    <message><source>&amp;Undo</source><translation>撤销(&amp;U)</translation></message>
    <message><source>&amp;Redo</source><translation>重做(&amp;R)</translation></message>
    <message><source>Cu&amp;t</source><translation>剪切(&amp;T)</translation></message>
    <message><source>&amp;Copy</source><translation>复制(&amp;C)</translation></message>
    <message><source>&amp;Paste</source><translation>粘贴(&amp;P)</translation></message>
    <message><source>Delete</source><translation>删除</translation></message>
    <message><source>Select All</source><translation>全选</translation></message>
    <message><source>Copy &amp;Link Location</source><translation>复制链接地址(&amp;L)</translation></message>
</context>
<context>
    <name>QLineEdit</name>
    <message><source>&amp;Undo</source><translation>撤销(&amp;U)</translation></message>
    <message><source>&amp;Redo</source><translation>重做(&amp;R)</translation></message>
    <message><source>Cu&amp;t</source><translation>剪切(&amp;T)</translation></message>
    <message><source>&amp;Copy</source><translation>复制(&amp;C)</translation></message>
    <message><source>&amp;Paste</source><translation>粘贴(&amp;P)</translation></message>
    <message><source>Delete</source><translation>删除</translation></message>
    <message><source>Select All</source><translation>全选</translation></message>
</context>
<context>
    <name>QAbstractSpinBox</name>
    <message><source>&amp;Select All</source><translation>全选(&amp;S)</translation></message>
    <message><source>&amp;Step up</source><translation>增大(&amp;S)</translation></message>
    <message><source>Step &amp;down</source><translation>减小(&amp;D)</translation></message>
</context>
<context>
    <name>QScrollBar</name>
    <message><source>Scroll here</source><translation>滚动到此处</translation></message>
    <message><source>Top</source><translation>顶部</translation></message>
    <message><source>Bottom</source><translation>底部</translation></message>
    <message><source>Left edge</source><translation>左端</translation></message>
    <message><source>Right edge</source><translation>右端</translation></message>
    <message><source>Page up</source><translation>上一页</translation></message>
    <message><source>Page down</source><translation>下一页</translation></message>
    <message><source>Page left</source><translation>向左翻页</translation></message>
    <message><source>Page right</source><translation>向右翻页</translation></message>
    <message><source>Scroll up</source><translation>向上滚动</translation></message>
    <message><source>Scroll down</source><translation>向下滚动</translation></message>
    <message><source>Scroll left</source><translation>向左滚动</translation></message>
    <message><source>Scroll right</source><translation>向右滚动</translation></message>
</context>
<context>
    <name>QFileDialog</name>
    <message><source>Look in:</source><translation>位置：</translation></message>
    <message><source>Back</source><translation>后退</translation></message>
    <message><source>Go back</source><translation>后退</translation></message>
    <message><source>Forward</source><translation>前进</translation></message>
    <message><source>Go forward</source><translation>前进</translation></message>
    <message><source>Parent Directory</source><translation>上一级</translation></message>
    <message><source>Go to the parent directory</source><translation>到上一级文件夹</translation></message>
    <message><source>Create New Folder</source><translation>新建文件夹</translation></message>
    <message><source>Create a New Folder</source><translation>新建文件夹</translation></message>
    <message><source>List View</source><translation>列表</translation></message>
    <message><source>Change to list view mode</source><translation>以列表显示</translation></message>
    <message><source>Detail View</source><translation>详细</translation></message>
    <message><source>Change to detail view mode</source><translation>以详细列表显示</translation></message>
    <message><source>Sidebar</source><translation>常用位置</translation></message>
    <message><source>List of places and bookmarks</source><translation>常用位置</translation></message>
    <message><source>Files</source><translation>文件</translation></message>
    <message><source>Files of type:</source><translation>类型：</translation></message>
    <message><source>File &amp;name:</source><translation>文件名(&amp;N)：</translation></message>
    <message><source>New Folder</source><translation>新建文件夹</translation></message>
    <message><source>&amp;Open</source><translation>打开(&amp;O)</translation></message>
    <message><source>&amp;Save</source><translation>保存(&amp;S)</translation></message>
    <message><source>Cancel</source><translation>取消</translation></message>
    <message><source>Recent Places</source><translation>最近的位置</translation></message>
    <message><source>My Computer</source><translation>计算机</translation></message>
    <message><source>Computer</source><translation>计算机</translation></message>
    <message><source>Drive</source><translation>驱动器</translation></message>
    <message><source>File</source><translation>文件</translation></message>
    <message><source>Unknown</source><translation>未知</translation></message>
</context>
<context>
    <name>QFileSystemModel</name>
    <message><source>Name</source><translation>名称</translation></message>
    <message><source>Size</source><translation>大小</translation></message>
    <message><source>Kind</source><translation>类型</translation></message>
    <message><source>Type</source><translation>类型</translation></message>
    <message><source>Date Modified</source><translation>修改时间</translation></message>
    <message><source>My Computer</source><translation>计算机</translation></message>
    <message><source>Computer</source><translation>计算机</translation></message>
</context>
<context>
    <name>QPlatformTheme</name>
    <message><source>Cancel</source><translation>取消</translation></message>
    <message><source>Save</source><translation>保存</translation></message>
    <message><source>Open</source><translation>打开</translation></message>
    <message><source>&amp;No</source><translation>否(&amp;N)</translation></message>
    <message><source>&amp;Yes</source><translation>是(&amp;Y)</translation></message>
</context>
<context>
    <name>QDialogButtonBox</name>
    <message><source>Cancel</source><translation>取消</translation></message>
</context>
</TS>
