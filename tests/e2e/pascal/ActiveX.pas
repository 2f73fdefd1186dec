// In the place of the unit that compilers for Windows have, so that the sample compiles here.
unit ActiveX;
interface
function CoInitialize(reserved: Pointer): Longint;
implementation
function CoInitialize(reserved: Pointer): Longint;
begin
  CoInitialize := 0;
end;
end.
